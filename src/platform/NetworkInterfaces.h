#pragma once

#include <QList>
#include <QString>

#include <optional>

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

/// The IPv4 and IPv6 addresses of all interfaces, those that are down included, in the system's
/// order. None when the system does not tell.
[[nodiscard]] std::optional<InterfaceAddresses> interfaceAddresses();

/// The name of the interface that leads to the rest of the world: the one of the IPv4 default route
/// with the lowest metric, or else of the IPv6 one. Empty when there is none.
[[nodiscard]] QString defaultRouteInterface();

} // namespace platform
