#pragma once

#include <QIODevice>
#include <QString>

namespace platform {

// The kernel's routes as text (proc(5)), read line by line: a router's table has very many. Each
// gives the interface of the default route that is up and has the lowest metric, or nothing.

/// Reads the format of /proc/net/route.
[[nodiscard]] QString defaultInterfaceInIPv4Routes(QIODevice& routes);
/// Reads the format of /proc/net/ipv6_route.
[[nodiscard]] QString defaultInterfaceInIPv6Routes(QIODevice& routes);

} // namespace platform
