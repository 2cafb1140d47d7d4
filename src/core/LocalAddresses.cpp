#include "core/LocalAddresses.h"

#include <algorithm>

namespace ferrylane {

namespace {

using platform::InterfaceAddress;
using platform::InterfaceAddresses;
using Family = InterfaceAddress::Family;

constexpr QLatin1StringView loopbackAddress{"127.0.0.1"};
constexpr QLatin1StringView customaryInterface{"en0"};

bool isPrivateIPv4(const InterfaceAddress& address)
{
    const QString& text = address.text;
    return address.family == Family::ipv4 && !address.isLoopback
        && (text.startsWith(u"192.168.") || text.startsWith(u"10.") || text.startsWith(u"172."));
}

bool isLinkLocalIPv6(const InterfaceAddress& address)
{
    return address.family == Family::ipv6 && !address.isLoopback
        && address.text.startsWith(u"fe80:", Qt::CaseInsensitive);
}

} // namespace

QString localIPv4(const InterfaceAddresses& addresses)
{
    const auto found = std::find_if(addresses.begin(), addresses.end(), isPrivateIPv4);
    return found == addresses.end() ? QString(loopbackAddress) : found->text;
}

std::optional<QString> localIPv6LinkLocal(
    const InterfaceAddresses& addresses, const QString& defaultRouteInterface)
{
    const bool hasCustomaryOne
        = std::any_of(addresses.begin(), addresses.end(), [](const InterfaceAddress& address) {
              return address.interfaceName == customaryInterface;
          });
    const QString preferred = hasCustomaryOne ? QString(customaryInterface) : defaultRouteInterface;
    std::optional<QString> first;
    for (const InterfaceAddress& address : addresses) {
        if (!isLinkLocalIPv6(address)) continue;
        const QString withoutZone = address.text.section(u'%', 0, 0);
        if (address.interfaceName == preferred) return withoutZone;
        if (!first) first = withoutZone;
    }
    return first;
}

QString ferrylaneLocalHostForURL(
    const InterfaceAddresses& addresses, const QString& defaultRouteInterface)
{
    QString ipv4 = localIPv4(addresses);
    if (ipv4 != loopbackAddress) return ipv4;
    const auto ipv6 = localIPv6LinkLocal(addresses, defaultRouteInterface);
    return ipv6 ? u'[' + *ipv6 + u']' : ipv4;
}

} // namespace ferrylane
