#include "protocol/IdentifyHandshake.h"
#include "protocol/Routing.h"
#include "support/Fragments.h"
#include "support/QtPrinting.h"
#include "support/TestVectors.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using namespace support;

namespace {

QByteArray json(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// An upload, in the members of a row.
QJsonObject described(const routes::Upload& upload)
{
    const V4Transfer& transfer = upload.transfer.value();
    return {{u"fileName"_s, transfer.fileName}, {u"fileSize"_s, transfer.fileSize},
        {u"transferId"_s, transfer.id},
        {u"noncePrefix"_s,
            QString::fromLatin1(platform::toByteArray(transfer.noncePrefix).toHex())},
        {u"senderName"_s, upload.senderName ? QJsonValue(*upload.senderName) : QJsonValue()}};
}

/// What becomes of a request to an idle computer, in the members of a row.
QJsonObject outcomeOf(const Route& request)
{
    if (const auto* const upload = std::get_if<routes::Upload>(&request)) {
        if (upload->transfer) return {{u"upload"_s, described(*upload)}};
        return {{u"answer"_s,
            QString::fromUtf8(
                HttpAnswer{statuses::badRequest, "Authentication metadata missing"}.toBytes())}};
    }
    if (std::holds_alternative<routes::Readiness>(request)) {
        return {{u"answer"_s, QString::fromUtf8(HttpAnswer{statuses::ok, "READY"}.toBytes())}};
    }
    const auto& answer = std::get<HttpAnswer>(request);
    if (answer.contentType != plainText) return {{u"page"_s, true}};
    return {{u"answer"_s, QString::fromUtf8(answer.toBytes())}};
}

QJsonObject outcomeOf(const QByteArray& request, std::size_t fragmentSize)
{
    QJsonObject outcome;
    RequestHeadParser parser;
    QByteArray received;
    inFragments(platform::bytesOf(request), fragmentSize, [&](platform::ByteView fragment) {
        received += platform::toByteArray(fragment);
        const auto result = parser.parse(platform::bytesOf(received));
        if (const auto* const refusal = std::get_if<HttpAnswer>(&result)) {
            outcome = outcomeOf(Route(*refusal));
        } else if (const auto* const complete = std::get_if<RequestHeadParser::Complete>(&result)) {
            outcome = outcomeOf(route(complete->head));
        }
        return std::holds_alternative<RequestHeadParser::NeedMore>(result);
    });
    return outcome;
}

} // namespace

TEST(RequestVectors, giveTheirOutcomeHoweverTheyAreCut)
{
    for (const QJsonValue value : vectorRows(u"request-heads.json"_s)) {
        QJsonObject expected = value.toObject();
        const QByteArray request = vectorBytes(expected.take(u"request"));
        expected.remove(u"what");
        for (const std::size_t size : fragmentSizes) {
            if (request.size() > 50000 && size < 31) continue;
            SCOPED_TRACE(vectorTrace(value) + ", fragments of " + std::to_string(size));
            EXPECT_EQ(json(outcomeOf(request, size)), json(expected));
        }
    }
}

TEST(IdentifyVectors, areAnsweredByteForByte)
{
    const QJsonObject file = vectorObject(u"identify.json"_s);
    const auto key
        = platform::SecretKey::fromBytes(platform::bytesOf(vectorHex(file[u"key"]))).value();
    for (const QJsonValue value : vectorRows(u"identify.json"_s, u"rows"_s)) {
        SCOPED_TRACE(vectorTrace(value));
        const QByteArray refusal = HttpAnswer{statuses::badRequest, "Invalid challenge"}.toBytes();
        EXPECT_EQ(identifyResponse(key, vectorText(value[u"challenge"]), value[u"name"].toString())
                      .value_or(refusal),
            value[u"answer"].toString().toUtf8());
    }
}
