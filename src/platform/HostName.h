#pragma once

#include <QString>

namespace platform {

/// The name that people gave this computer: PRETTY_HOSTNAME of machine-info(5), else the host
/// name's first label. May be empty.
[[nodiscard]] QString localizedHostName();
/// The same for the content of a machine-info file and a host name.
[[nodiscard]] QString localizedHostName(const QByteArray& machineInfo, const QString& hostName);

} // namespace platform
