#include "protocol/DiscoveryProtocol.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;

// The usual datagrams are among the protocol's test vectors.

TEST(DiscoveryReply, isReadToTheLetter)
{
    struct Row {
        QByteArray rest;
        QString name;
        std::optional<std::uint16_t> port;
    };
    constexpr auto unreachable = std::nullopt;
    const QByteArray byteOrderMark = "\xef\xbb\xbf";
    for (const Row& row : {
             Row{"||a|65535", u"a"_s, 65535},
             Row{byteOrderMark + "a|1", u"\uFEFFa"_s, 1},
             Row{"a|007", u"a"_s, 7},
             Row{"a||9000", u"a"_s, 8787},
             Row{"a|+-1", u"a"_s, 8787},
             Row{"a|++1", u"a"_s, 8787},
             Row{"a|-", u"a"_s, 8787},
             Row{"a|0x10", u"a"_s, 8787},
             Row{"a|9223372036854775807", u"a"_s, unreachable},
         }) {
        const QByteArray datagram = discoveryReplyPrefix.toByteArray() + row.rest;
        const auto reply = parseDiscoveryReply(platform::bytesOf(datagram));
        ASSERT_TRUE(reply) << datagram.constData();
        EXPECT_EQ(*reply, (DiscoveryReply{row.name, row.port})) << datagram.constData();
    }
}
