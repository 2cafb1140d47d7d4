#include "platform/linux/RouteTables.h"

#include <QByteArrayList>

#include <optional>

#include <net/route.h>

namespace platform {

namespace {

struct Route {
    QString interfaceName;
    quint32 metric = 0;
};

std::optional<quint32> number(const QByteArray& digits, int base)
{
    bool valid = false;
    const quint32 value = digits.toUInt(&valid, base);
    return valid ? std::optional(value) : std::nullopt;
}

std::optional<Route> usableRoute(
    const QByteArray& interfaceName, const QByteArray& flagDigits, std::optional<quint32> metric)
{
    const auto flags = number(flagDigits, 16);
    if (!flags || !metric || (*flags & RTF_UP) == 0 || (*flags & RTF_REJECT) != 0) {
        return std::nullopt;
    }
    return Route{QString::fromLocal8Bit(interfaceName), *metric};
}

/// Interface, destination, gateway, flags, counts of references and uses, metric, mask, and more.
std::optional<Route> defaultIPv4Route(const QByteArrayList& fields)
{
    if (fields.size() < 8 || number(fields[1], 16) != 0U || number(fields[7], 16) != 0U) {
        return std::nullopt;
    }
    return usableRoute(fields[0], fields[3], number(fields[6], 10));
}

/// Destination, prefix length, source, its prefix length, next hop, metric, counts of references
/// and uses, flags, interface. All numbers are hexadecimal.
std::optional<Route> defaultIPv6Route(const QByteArrayList& fields)
{
    if (fields.size() < 10 || number(fields[1], 16) != 0U) return std::nullopt;
    return usableRoute(fields[9], fields[8], number(fields[5], 16));
}

using ParseLine = std::optional<Route> (*)(const QByteArrayList&);

QString bestInterface(QIODevice& routes, ParseLine parse)
{
    constexpr qint64 longestLine = 1000;
    std::optional<Route> best;
    for (QByteArray line = routes.readLine(longestLine); !line.isEmpty();
         line = routes.readLine(longestLine)) {
        auto route = parse(line.simplified().split(' '));
        if (route && (!best || route->metric < best->metric)) best = std::move(route);
    }
    return best ? best->interfaceName : QString();
}

} // namespace

QString defaultInterfaceInIPv4Routes(QIODevice& routes)
{
    return bestInterface(routes, defaultIPv4Route);
}

QString defaultInterfaceInIPv6Routes(QIODevice& routes)
{
    return bestInterface(routes, defaultIPv6Route);
}

} // namespace platform
