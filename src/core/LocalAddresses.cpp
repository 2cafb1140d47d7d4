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

QString preferredInterface(
    const InterfaceAddresses& addresses, const QString& defaultRouteInterface)
{
    const bool hasCustomaryOne
        = std::any_of(addresses.begin(), addresses.end(), [](const InterfaceAddress& address) {
              return address.interfaceName == customaryInterface;
          });
    return hasCustomaryOne ? QString(customaryInterface) : defaultRouteInterface;
}

QString withoutZone(const QString& address)
{
    return address.section(u'%', 0, 0);
}

} // namespace

QString localIPv4(const std::optional<InterfaceAddresses>& addresses)
{
    if (addresses) {
        const auto found = std::find_if(addresses->begin(), addresses->end(), isPrivateIPv4);
        if (found != addresses->end()) return found->text;
    }
    return loopbackAddress;
}

std::optional<QString> localIPv6LinkLocal(
    const std::optional<InterfaceAddresses>& addresses, const QString& defaultRouteInterface)
{
    if (!addresses) return std::nullopt;
    const QString preferred = preferredInterface(*addresses, defaultRouteInterface);
    std::optional<QString> first;
    for (const InterfaceAddress& address : *addresses) {
        if (!isLinkLocalIPv6(address)) continue;
        if (address.interfaceName == preferred) return withoutZone(address.text);
        if (!first) first = withoutZone(address.text);
    }
    return first;
}

QString ferrylaneLocalHostForURL(
    const std::optional<InterfaceAddresses>& addresses, const QString& defaultRouteInterface)
{
    QString ipv4 = localIPv4(addresses);
    if (ipv4 != loopbackAddress) return ipv4;
    const auto ipv6 = localIPv6LinkLocal(addresses, defaultRouteInterface);
    return ipv6 ? u'[' + *ipv6 + u']' : ipv4;
}

QString localIPv4()
{
    return localIPv4(platform::interfaceAddresses());
}

std::optional<QString> localIPv6LinkLocal()
{
    return localIPv6LinkLocal(platform::interfaceAddresses(), platform::defaultRouteInterface());
}

QString ferrylaneLocalHostForURL()
{
    return ferrylaneLocalHostForURL(
        platform::interfaceAddresses(), platform::defaultRouteInterface());
}

} // namespace ferrylane
