#include "core/Encodings.h"
#include "phone/PairingLink.h"
#include "protocol/PairingLink.h"
#include "support/QtPrinting.h"
#include "support/TestVectors.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using namespace support;

TEST(PairingVectors, areTheLinksThatTheComputerShows)
{
    const QByteArray keyBytes = vectorHex(vectorObject(u"pairing.json"_s)[u"key"]);
    const QString key = base64URLEncode(platform::bytesOf(keyBytes));
    for (const QJsonValue row : vectorRows(u"pairing.json"_s, u"computerLinksWritten"_s)) {
        const QString host = row[u"host"].toString();
        const auto port = static_cast<std::uint16_t>(row[u"port"].toInt());
        const auto name = vectorText(row[u"name"]);
        EXPECT_EQ(name ? ferrylanePairingLink(host, port, key, *name)
                       : ferrylanePairingLink(host, port, key),
            row[u"link"].toString());
    }
}

TEST(PairingVectors, areReadByAPhone)
{
    for (const QJsonValue row : vectorRows(u"pairing.json"_s, u"computerLinksRead"_s)) {
        SCOPED_TRACE(vectorTrace(row));
        const auto link = phone::parsePairingLink(row[u"link"].toString());
        EXPECT_EQ(
            link ? std::optional(link->address.host) : std::nullopt, vectorText(row[u"host"]));
        if (!link) continue;
        EXPECT_EQ(link->address.port, row[u"port"].toInt());
        EXPECT_EQ(platform::toByteArray(link->key.bytes()), vectorHex(row[u"key"]));
    }
}

TEST(PairingVectors, areTheCodesOfPhonesAsTheyShouldBeRead)
{
    for (const QJsonValue row : vectorRows(u"pairing.json"_s, u"phoneCodes"_s)) {
        SCOPED_TRACE(vectorTrace(row));
        const auto target = parseFerrylanePairingQR(row[u"text"].toString());
        EXPECT_EQ(target ? std::optional(target->name) : std::nullopt, vectorText(row[u"name"]));
        if (!target) continue;
        EXPECT_EQ(target->baseURL, row[u"baseURL"].toString());
        EXPECT_EQ(target->keyB64, row[u"keyB64"].toString());
    }
}
