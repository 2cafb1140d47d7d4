#include "discovery/DiscoveryProtocol.h"

#include <gtest/gtest.h>

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
