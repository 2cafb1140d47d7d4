#include "receiver/IdentifyHandshake.h"

#include "core/Base64Url.h"
#include "support/UploadStream.h"

#include <QList>

#include <gtest/gtest.h>

using namespace ferrylane;

namespace {

const QString officeMac = QStringLiteral("Office Mac");

std::optional<QByteArray> respond(const QString& challenge)
{
    return identifyResponse(support::testKey(), challenge, officeMac);
}

QString encoded(qsizetype bytes)
{
    return base64URLEncode(platform::bytesOf(QByteArray(bytes, '\xFB')));
}

} // namespace

TEST(IdentifyHandshake, answersByteForByte)
{
    // Both codes computed with another HMAC implementation for the key 00 01 … 1f.
    EXPECT_EQ(respond(QStringLiteral("AAECAwQFBgcICQoLDA0ODw")),
        "HTTP/1.1 200 OK\r\n"
        "Content-Length: 0\r\n"
        "Connection: close\r\n"
        "Cache-Control: no-store\r\n"
        "X-Ferrylane-Proof: 2LmfJwmjynQXLL6TgkwfKbI6DB6cIb2FH_LSw52-8U4\r\n"
        "X-Ferrylane-Name: Office%20Mac\r\n"
        "X-Ferrylane-Name-Proof: V0wgutCPt0bDs4EdTduDi7yEYE0hPnNbq3Ta_0mP_H8\r\n"
        "\r\n");
}

TEST(IdentifyHandshake, takesChallengesOf16To64Bytes)
{
    for (const qsizetype bytes : {16, 17, 63, 64}) {
        EXPECT_TRUE(respond(encoded(bytes))) << bytes;
    }
    for (const qsizetype bytes : {0, 1, 15, 65, 100}) {
        EXPECT_FALSE(respond(encoded(bytes))) << bytes;
    }
    EXPECT_FALSE(identifyResponse(support::testKey(), std::nullopt, officeMac));
    EXPECT_FALSE(respond(QStringLiteral("not base64 but long enough!")));
}

TEST(IdentifyHandshake, theNameProofBindsTheSpellingOfTheChallenge)
{
    const QString url = encoded(16);
    QString standard = url;
    standard.replace(u'-', u'+').replace(u'_', u'/');
    const auto part = [](const QByteArray& response, const char* name) {
        return response.mid(response.indexOf(name)).split('\r').front();
    };
    ASSERT_NE(url, standard);
    const QByteArray first = *respond(url);
    const QByteArray second = *respond(standard + QStringLiteral("=="));
    EXPECT_EQ(part(first, "X-Ferrylane-Proof"), part(second, "X-Ferrylane-Proof"));
    EXPECT_NE(part(first, "X-Ferrylane-Name-Proof"), part(second, "X-Ferrylane-Name-Proof"));
    EXPECT_EQ(first, *respond(url));
}
