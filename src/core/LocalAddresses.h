#pragma once

#include "platform/NetworkInterfaces.h"

#include <QString>

#include <optional>

namespace ferrylane {

// Where phones on the local network reach this computer. Nothing is kept: each call looks at the
// network anew, unless it is given what to look at.

/// The first address of a private range on an interface other than loopback, else "127.0.0.1". All
/// of 172.0.0.0/8 counts as private here, as it does for the phones.
[[nodiscard]] QString localIPv4(
    const platform::InterfaceAddresses& addresses = platform::interfaceAddresses());

/// A link-local IPv6 address (RFC 4291, section 2.5.6) without its zone, which means nothing to
/// another host: that of the interface "en0" where there is one by that name, else of the default
/// route's interface, else the first.
[[nodiscard]] std::optional<QString> localIPv6LinkLocal(
    const platform::InterfaceAddresses& addresses = platform::interfaceAddresses(),
    const QString& defaultRouteInterface = platform::defaultRouteInterface());

/// What stands as the host in a URL of this computer: the IPv4 address or, when that is only
/// loopback's, the link-local IPv6 address in brackets if there is one.
[[nodiscard]] QString ferrylaneLocalHostForURL(
    const platform::InterfaceAddresses& addresses = platform::interfaceAddresses(),
    const QString& defaultRouteInterface = platform::defaultRouteInterface());

} // namespace ferrylane
