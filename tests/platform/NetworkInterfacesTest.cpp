#include "platform/NetworkInterfaces.h"

#include "support/QtPrinting.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace platform;

namespace {

QString found(QByteArray ipv4Routes, QByteArray ipv6Routes = {})
{
    QBuffer ipv4(&ipv4Routes);
    QBuffer ipv6(&ipv6Routes);
    return ipv4.open(QBuffer::ReadOnly) && ipv6.open(QBuffer::ReadOnly)
        ? defaultRouteInterface(ipv4, ipv6)
        : QStringLiteral("not open");
}

const QByteArray zeros(32, '0');

QByteArray ipv6Route(const QByteArray& destination, const QByteArray& length,
    const QByteArray& metric, const QByteArray& flags, const QByteArray& name)
{
    return destination + ' ' + length + ' ' + zeros + " 00 " + zeros + ' ' + metric
        + " 00000001 00000000 " + flags + "     " + name + '\n';
}

} // namespace

TEST(NetworkInterfaces, listsTheLoopbackAddress)
{
    const auto addresses = interfaceAddresses();
    EXPECT_TRUE(std::any_of(addresses.begin(), addresses.end(), [](const auto& address) {
        return address.isLoopback && address.text == u"127.0.0.1" && address.interfaceName == u"lo"
            && address.family == InterfaceAddress::Family::ipv4;
    }));
}

TEST(NetworkInterfaces, findsTheDefaultRouteOfIPv4)
{
    const QByteArray head = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU"
                            "\tWindow\tIRTT   \n";
    const QByteArray local = "eth0\t0001A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0   \n";
    const QByteArray half = "tun0\t00000000\t00000000\t0001\t0\t0\t0\t00000080\t0\t0\t0\n";
    const QByteArray slow = "wlan0\t00000000\t0101A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n";
    const QByteArray fast = "eth0\t00000000\t0101A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n";
    const QByteArray down = "usb0\t00000000\t0101A8C0\t0002\t0\t0\t0\t00000000\t0\t0\t0\n";
    const QByteArray refused = "*\t00000000\t00000000\t0201\t0\t0\t0\t00000000\t0\t0\t0\n";
    EXPECT_EQ(found(head + local + half + slow), u"wlan0"_s);
    EXPECT_EQ(found(head + slow + fast + down + refused), u"eth0"_s);
    EXPECT_EQ(found(head + fast + slow), u"eth0"_s);
    EXPECT_EQ(found(head + local + half + down + refused), u""_s);
    EXPECT_EQ(found(head + "eth0\t00000000\n\neth0\tx\tx\tx\tx\tx\tx\tx\n"), u""_s);
    EXPECT_EQ(found(""), u""_s);
}

TEST(NetworkInterfaces, findsTheDefaultRouteOfIPv6)
{
    const QByteArray linkLocal = "fe80" + zeros.first(28);
    const QByteArray routes = ipv6Route(linkLocal, "40", "00000100", "00000001", "eth0")
        + ipv6Route(zeros, "00", "ffffffff", "00200200", "lo")
        + ipv6Route(zeros, "80", "00000000", "80200001", "lo");
    EXPECT_EQ(found({}, routes), u""_s);
    EXPECT_EQ(found({},
                  routes + ipv6Route(zeros, "00", "00000400", "00000003", "wlan0")
                      + ipv6Route(zeros, "00", "00000064", "00450003", "eth1")),
        u"eth1"_s);
    EXPECT_EQ(found("wlan0\t0\t0101A8C0\t0003\t0\t0\t600\t0\t0\t0\t0\n",
                  ipv6Route(zeros, "00", "00000064", "00450003", "eth1")),
        u"wlan0"_s);
}
