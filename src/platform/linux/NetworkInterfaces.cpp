#include "platform/NetworkInterfaces.h"

#include "platform/linux/RouteTables.h"

#include <QFile>

#include <array>
#include <memory>

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>

namespace platform {

namespace {

using Family = InterfaceAddress::Family;

struct FamilyInfo {
    Family family;
    socklen_t addressLength;
};

std::optional<FamilyInfo> familyOf(const sockaddr* address)
{
    if (address == nullptr) return std::nullopt;
    switch (address->sa_family) {
    case AF_INET:
        return FamilyInfo{Family::ipv4, sizeof(sockaddr_in)};
    case AF_INET6:
        return FamilyInfo{Family::ipv6, sizeof(sockaddr_in6)};
    default:
        return std::nullopt;
    }
}

std::optional<InterfaceAddress> addressOf(const ifaddrs& entry)
{
    const auto info = familyOf(entry.ifa_addr);
    if (!info) return std::nullopt;

    std::array<char, NI_MAXHOST> text{};
    const int error = ::getnameinfo(entry.ifa_addr, info->addressLength, text.data(),
        static_cast<socklen_t>(text.size()), nullptr, 0, NI_NUMERICHOST);
    if (error != 0) return std::nullopt;
    return InterfaceAddress{QString::fromLocal8Bit(entry.ifa_name),
        (entry.ifa_flags & IFF_LOOPBACK) != 0, info->family, QString::fromLatin1(text.data())};
}

using FindDefault = QString (*)(QIODevice&);

QString defaultInterfaceIn(const QString& path, FindDefault find)
{
    QFile file(path);
    // A kernel without this family has no such file.
    return file.open(QFile::ReadOnly) ? find(file) : QString();
}

} // namespace

std::optional<InterfaceAddresses> interfaceAddresses()
{
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) return std::nullopt;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);

    InterfaceAddresses addresses;
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (auto address = addressOf(*entry)) addresses.append(std::move(*address));
    }
    return addresses;
}

QString defaultRouteInterface()
{
    const QString name
        = defaultInterfaceIn(QStringLiteral("/proc/net/route"), defaultInterfaceInIPv4Routes);
    return name.isEmpty()
        ? defaultInterfaceIn(QStringLiteral("/proc/net/ipv6_route"), defaultInterfaceInIPv6Routes)
        : name;
}

} // namespace platform
