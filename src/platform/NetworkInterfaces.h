#pragma once

#include <QList>
#include <QString>

class QIODevice;

namespace platform {

/// One address of one network interface. An interface with several addresses has several of these.
struct InterfaceAddress {
    enum class Family { ipv4, ipv6 };

    QString interfaceName;
    bool isLoopback = false;
    Family family = Family::ipv4;
    /// Numeric; an IPv6 address that is valid on one link only ends in "%" and the link's zone.
    QString text;
};

using InterfaceAddresses = QList<InterfaceAddress>;

/// The IPv4 and IPv6 addresses of all interfaces, those that are down included, in the order of
/// the interfaces. Empty when the system does not tell.
[[nodiscard]] InterfaceAddresses interfaceAddresses();

/// The name of the interface that leads to the rest of the world: the one of the IPv4 default route
/// that is up and has the lowest metric, or else of the IPv6 one. Empty when there is none.
[[nodiscard]] QString defaultRouteInterface();
/// The same in tables of routes, in the formats of /proc/net/route and /proc/net/ipv6_route.
[[nodiscard]] QString defaultRouteInterface(QIODevice& ipv4Routes, QIODevice& ipv6Routes);

} // namespace platform
