#pragma once

#include <QString>

#include <optional>

namespace platform {

/// Starts this program anew 0.6 seconds from now, in a session of its own and with the same
/// environment; this process is to end meanwhile. Returns why it could not be done, or nothing.
[[nodiscard]] std::optional<QString> relaunchSoon();

} // namespace platform
