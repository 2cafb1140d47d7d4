#include "discovery/DiscoveryProtocol.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;

TEST(DiscoveryRequest, isItsExactBytes)
{
    const QByteArray request("FERRYLANE_DISCOVER_V1");
    EXPECT_TRUE(isDiscoveryRequest(platform::bytesOf(request)));

    for (const QByteArray& other : {QByteArray(), request + '\n', request + '\0', ' ' + request,
             request + request, request.chopped(1), request.toLower(), request + '\xff',
             QByteArray("FERRYLANE_DISCOVER_V2"), "\xef\xbb\xbf" + request,
             QByteArray("FERRYLANE_DISCOVER_\xc3\x28"), QByteArray(request.size(), '\0')}) {
        EXPECT_FALSE(isDiscoveryRequest(platform::bytesOf(other))) << other.toHex().constData();
    }
}

TEST(DiscoveryRequest, differsWithEachBit)
{
    const QByteArray request = discoveryRequest.toByteArray();
    for (qsizetype i = 0; i < request.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray changed = request;
            changed[i] = static_cast<char>(changed[i] ^ (1 << bit));
            EXPECT_FALSE(isDiscoveryRequest(platform::bytesOf(changed))) << changed.constData();
        }
    }
}

TEST(DiscoveryReply, carriesNameAndPort)
{
    struct Row {
        QString name;
        std::uint16_t tcpPort;
        const char* reply;
    };
    for (const Row& row : {
             Row{QStringLiteral("Office"), 8788, "FERRYLANE_HERE_V1|Office|8788"},
             Row{QString(), 1, "FERRYLANE_HERE_V1||1"},
             Row{QStringLiteral(" K\u00fcche \U0001F600 "), 65535,
                 "FERRYLANE_HERE_V1| Küche \U0001F600 |65535"},
             Row{QStringLiteral("|a||b\n\nc|"), 8788, "FERRYLANE_HERE_V1| a  b  c |8788"},
             // Nothing else is changed.
             Row{QStringLiteral("a\r\nb\tc"), 8788, "FERRYLANE_HERE_V1|a\r b\tc|8788"},
         }) {
        EXPECT_EQ(discoveryReply(row.name, row.tcpPort), QByteArray(row.reply));
    }
}

TEST(DiscoveryReply, isReadBack)
{
    struct Row {
        QByteArray datagram;
        QString name;
        std::optional<std::uint16_t> port;
    };
    const QByteArray tag = "FERRYLANE_HERE_V1|";
    constexpr auto unreachable = std::nullopt;
    for (const Row& row : {
             Row{tag + "Pixel 8|8787", u"Pixel 8"_s, 8787},
             Row{tag
                     + " \tK\xc3\xbc"
                       "che\n |1",
                 u"Küche"_s, 1},
             Row{tag + "||a|65535", u"a"_s, 65535},
             Row{tag
                     + "\xef\xbb\xbf"
                       "a|1",
                 u"\uFEFFa"_s, 1},
             Row{tag + "a|+9000", u"a"_s, 9000},
             Row{tag + "a|007", u"a"_s, 7},
             // No number, no matter what else it is.
             Row{tag + "a|x", u"a"_s, 8787},
             Row{tag + "a| 9000", u"a"_s, 8787},
             Row{tag + "a|9000\n", u"a"_s, 8787},
             Row{tag + "a|9000|", u"a"_s, 8787},
             Row{tag + "a||9000", u"a"_s, 8787},
             Row{tag + "a|+-1", u"a"_s, 8787},
             Row{tag + "a|++1", u"a"_s, 8787},
             Row{tag + "a|-", u"a"_s, 8787},
             Row{tag + "a|0x10", u"a"_s, 8787},
             Row{tag + "a|99999999999999999999", u"a"_s, 8787},
             // A number, but no port.
             Row{tag + "a|0", u"a"_s, unreachable},
             Row{tag + "a|-8787", u"a"_s, unreachable},
             Row{tag + "a|65536", u"a"_s, unreachable},
             Row{tag + "a|9223372036854775807", u"a"_s, unreachable},
         }) {
        const auto reply = parseDiscoveryReply(platform::bytesOf(row.datagram));
        ASSERT_TRUE(reply) << row.datagram.constData();
        EXPECT_EQ(*reply, (DiscoveryReply{row.name, row.port})) << row.datagram.constData();
    }
    for (const QByteArray& other : {QByteArray(), tag, tag + '|', tag + "a", tag + "a|",
             tag + "|||", tag + "||a|", tag + " \n |8787", "x" + tag + "a|1", tag.toLower() + "a|1",
             tag.chopped(1) + " a|1", tag + "\xff|1", tag + "a|\xc3", "\xef\xbb\xbf" + tag + "a|1",
             QByteArray("FERRYLANE_HERE_V2|a|1")}) {
        EXPECT_FALSE(parseDiscoveryReply(platform::bytesOf(other))) << other.constData();
    }
}
