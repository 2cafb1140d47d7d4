#include "protocol/DiscoveryProtocol.h"
#include "support/QtPrinting.h"
#include "support/TestVectors.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using namespace support;

TEST(DiscoveryVectors, tellRequestsFromEverythingElse)
{
    for (const QJsonValue row : vectorRows(u"discovery.json"_s, u"requests"_s)) {
        EXPECT_EQ(isDiscoveryRequest(platform::bytesOf(vectorBytes(row[u"datagram"]))),
            row[u"answered"].toBool())
            << vectorTrace(row);
    }
}

TEST(DiscoveryVectors, areTheRepliesThatAreSent)
{
    for (const QJsonValue row : vectorRows(u"discovery.json"_s, u"repliesWritten"_s)) {
        EXPECT_EQ(discoveryReply(
                      row[u"name"].toString(), static_cast<std::uint16_t>(row[u"port"].toInt())),
            vectorBytes(row[u"datagram"]));
    }
}

TEST(DiscoveryVectors, areReadAsTheyShould)
{
    for (const QJsonValue row : vectorRows(u"discovery.json"_s, u"repliesRead"_s)) {
        SCOPED_TRACE(vectorTrace(row));
        const auto reply = parseDiscoveryReply(platform::bytesOf(vectorBytes(row[u"datagram"])));
        EXPECT_EQ(reply ? std::optional(reply->name) : std::nullopt, vectorText(row[u"name"]));
        if (!reply) continue;
        EXPECT_EQ(reply->tcpPort.value_or(0), row[u"port"].toInt(0));
    }
}
