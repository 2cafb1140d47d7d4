#pragma once

#include <QString>

namespace platform {

/// The name that people gave this computer: PRETTY_HOSTNAME of machine-info(5), else the host
/// name's first label. May be empty.
[[nodiscard]] QString localizedHostName();

} // namespace platform
