#include "platform/NetworkInterfaces.h"

#include <QFile>
#include <QNetworkInterface>

#include <limits>

#include <net/route.h>

namespace platform {

namespace {

/// Of all numbers in these tables but the metrics of IPv4.
constexpr int routeNumberBase = 16;

/// Where a table has what; the first two columns named are 0 in a default route.
struct Columns {
    qsizetype destination, mask, metric, flags, interface;
    int metricBase;
    qsizetype count;
};
/// Interface, destination, gateway, flags, counts of references and uses, metric, mask, and more.
constexpr Columns ipv4Columns{1, 7, 6, 3, 0, 10, 8};
/// Destination, prefix length, source, its prefix length, next hop, metric, counts of references
/// and uses, flags, interface.
constexpr Columns ipv6Columns{1, 1, 5, 8, 9, routeNumberBase, 10};

/// Read line by line: a router's table has very many.
QString defaultInterfaceIn(QIODevice& routes, const Columns& columns)
{
    constexpr qint64 longestLine = 1000;
    QString best;
    quint64 bestMetric = std::numeric_limits<quint64>::max();
    for (QByteArray line = routes.readLine(longestLine); !line.isEmpty();
         line = routes.readLine(longestLine)) {
        const QByteArrayList fields = line.simplified().split(' ');
        if (fields.size() < columns.count) continue;
        bool areNumbers = true;
        const auto number = [&](qsizetype column, int base) {
            bool isNumber = false;
            const quint32 value = fields[column].toUInt(&isNumber, base);
            areNumbers = areNumbers && isNumber;
            return value;
        };
        const bool isDefault = number(columns.destination, routeNumberBase) == 0
            && number(columns.mask, routeNumberBase) == 0;
        const quint32 flags = number(columns.flags, routeNumberBase);
        const quint32 metric = number(columns.metric, columns.metricBase);
        const bool isUsable = (flags & RTF_UP) != 0 && (flags & RTF_REJECT) == 0;
        if (!areNumbers || !isDefault || !isUsable || metric >= bestMetric) continue;
        best = QString::fromLocal8Bit(fields[columns.interface]);
        bestMetric = metric;
    }
    return best;
}

} // namespace

InterfaceAddresses interfaceAddresses()
{
    InterfaceAddresses addresses;
    for (const QNetworkInterface& interface : QNetworkInterface::allInterfaces()) {
        const bool isLoopback = interface.flags().testFlag(QNetworkInterface::IsLoopBack);
        for (const QNetworkAddressEntry& entry : interface.addressEntries()) {
            const bool isIPv4 = entry.ip().protocol() == QAbstractSocket::IPv4Protocol;
            addresses.append({interface.name(), isLoopback,
                isIPv4 ? InterfaceAddress::Family::ipv4 : InterfaceAddress::Family::ipv6,
                entry.ip().toString()});
        }
    }
    return addresses;
}

QString defaultRouteInterface(QIODevice& ipv4Routes, QIODevice& ipv6Routes)
{
    const QString name = defaultInterfaceIn(ipv4Routes, ipv4Columns);
    return name.isEmpty() ? defaultInterfaceIn(ipv6Routes, ipv6Columns) : name;
}

QString defaultRouteInterface()
{
    QFile ipv4Routes(QStringLiteral("/proc/net/route"));
    QFile ipv6Routes(QStringLiteral("/proc/net/ipv6_route"));
    // A kernel without a family has no such file, and reading it gives nothing.
    static_cast<void>(ipv4Routes.open(QFile::ReadOnly));
    static_cast<void>(ipv6Routes.open(QFile::ReadOnly));
    return defaultRouteInterface(ipv4Routes, ipv6Routes);
}

} // namespace platform
