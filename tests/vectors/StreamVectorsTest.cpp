#include "protocol/Routing.h"
#include "support/Fragments.h"
#include "support/MemorySource.h"
#include "support/QtPrinting.h"
#include "support/TestVectors.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using namespace support;

namespace {

platform::SecretKey keyOf(const QJsonObject& row)
{
    return platform::SecretKey::fromBytes(platform::bytesOf(vectorHex(row[u"key"]))).value();
}

V4Transfer transferOf(const QJsonObject& row)
{
    V4Transfer transfer{row[u"transferId"].toString(), row[u"fileName"].toString(),
        row[u"fileSize"].toInteger(), {}};
    platform::copyBytes(platform::bytesOf(vectorHex(row[u"noncePrefix"])), transfer.noncePrefix);
    return transfer;
}

/// What a receiver makes of a head.
V4Transfer transferOfHead(const QByteArray& head)
{
    const auto parsed = RequestHeadParser().parse(platform::bytesOf(head));
    const auto request = route(std::get<RequestHeadParser::Complete>(parsed).head);
    return std::get<routes::Upload>(request).transfer.value();
}

QByteArray answerTo(const ReadBody& read)
{
    return read.failure ? read.failure->text.toUtf8() : QByteArray("OK SHA256");
}

QJsonArray hexOf(const std::vector<QByteArray>& records)
{
    QJsonArray digits;
    for (const QByteArray& record : records) {
        digits.append(QString::fromLatin1(record.toHex()));
    }
    return digits;
}

QByteArray sha256Of(const QByteArray& bytes)
{
    platform::Sha256 sha256;
    sha256.update(platform::bytesOf(bytes));
    return platform::toByteArray(sha256.finish());
}

} // namespace

TEST(StreamVectors, areWhatASenderWritesAndAReceiverReads)
{
    for (const QJsonValue value : vectorRows(u"streams.json"_s)) {
        SCOPED_TRACE(vectorTrace(value));
        const QJsonObject row = value.toObject();
        const auto key = keyOf(row);
        const V4Transfer transfer = transferOf(row);
        const QByteArray content = vectorBytes(row[u"content"]);

        const auto records = sealedRecords(key, transfer, content, row[u"pieceBytes"].toInteger());
        const QByteArray body = chunkedBody(records);
        if (row.contains(u"body")) {
            EXPECT_EQ(body.toHex(), row[u"body"].toString().toLatin1());
            EXPECT_EQ(hexOf(records), row[u"records"].toArray());
        } else {
            EXPECT_EQ(sha256Of(body), vectorHex(row[u"bodySha256"]));
        }
        const QByteArray head = uploadRequestHead(transfer, row[u"host"].toString(),
            static_cast<std::uint16_t>(row[u"port"].toInt()), row[u"senderName"].toString());
        EXPECT_EQ(head, vectorBytes(row[u"head"]));

        for (const std::size_t size : {std::size_t{7}, SIZE_MAX}) {
            const ReadBody read = readBody(key, transferOfHead(head), body, size);
            EXPECT_EQ(answerTo(read), "OK SHA256");
            EXPECT_TRUE(read.content == content);
        }
    }
}

TEST(ReceivedBodyVectors, giveTheirAnswerHoweverTheyAreCut)
{
    const QJsonObject file = vectorObject(u"received-bodies.json"_s);
    for (const QJsonValue value : vectorRows(u"received-bodies.json"_s, u"rows"_s)) {
        const QJsonObject row = value.toObject();
        const QByteArray head = vectorBytes(row.contains(u"head") ? row[u"head"] : file[u"head"]);
        for (const std::size_t size : fragmentSizes) {
            SCOPED_TRACE(vectorTrace(value) + ", fragments of " + std::to_string(size));
            const ReadBody read
                = readBody(keyOf(file), transferOfHead(head), vectorHex(row[u"body"]), size);
            EXPECT_EQ(answerTo(read), row[u"text"].toString().toLatin1());
            if (read.failure) continue;
            EXPECT_EQ(read.content, vectorBytes(file[u"content"]));
        }
    }
}
