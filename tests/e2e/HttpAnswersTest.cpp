#include "ReceiverTest.h"

#include "core/Base64Url.h"
#include "platform/Crypto.h"

// What the service answers over a real socket, byte for byte.

using namespace e2e;

namespace {

class HttpAnswers : public ReceiverTest {
protected:
    static QByteArray hmacText(const platform::SecretKey& key, const QByteArray& message)
    {
        return ferrylane::base64URLEncode(platform::hmacSha256(key, platform::bytesOf(message)))
            .toLatin1();
    }
};

QByteArray request(const QByteArray& method, const QByteArray& target, const QByteArray& headers)
{
    return method + ' ' + target + " HTTP/1.1\r\n" + headers + "\r\n";
}

QByteArray uploadHeaders(const QByteArray& transferId, const QByteArray& noncePrefix)
{
    return "Transfer-Encoding: chunked\r\nX-Ferrylane-Transfer-ID: " + transferId
        + "\r\nX-Ferrylane-Nonce-Prefix: " + noncePrefix + "\r\n";
}

} // namespace

TEST_F(HttpAnswers, forEveryRouteAndLimit)
{
    const QByteArray tooLarge = "431 Request Header Fields Too Large";
    const QByteArray legacy = "Legacy transfer route disabled; Ferrylane protocol v4 required";
    struct Row {
        const char* what;
        QByteArray request;
        QByteArray status;
        QByteArray body;
    };
    const Row rows[] = {
        {"ready", getRequest("/transfer-status"), "200 OK", "READY"},
        {"method in lower case", request("get", "/transfer-status", ""), "404 Not Found",
            "Not found"},
        {"no request line", "\r\n\r\n", "404 Not Found", "Not found"},
        {"target without slash", request("GET", "x", ""), "404 Not Found", "Not found"},
        {"upload without chunks", request("POST", "/secure-upload-v4", ""), "404 Not Found",
            "Not found"},
        {"first upload route", request("POST", "/upload", ""), "426 Upgrade Required", legacy},
        {"second upload route", request("POST", "/secure-upload", ""), "426 Upgrade Required",
            legacy},
        {"third upload route", request("POST", "/secure-upload-v3", ""), "426 Upgrade Required",
            legacy},
        {"no challenge", getRequest("/secure-identify"), "400 Bad Request", "Invalid challenge"},
        {"short challenge",
            request("GET", "/secure-identify", "X-Ferrylane-Challenge: AAECAwQFBgcICQoLDA0O\r\n"),
            "400 Bad Request", "Invalid challenge"},
        {"short transfer id",
            request("POST", "/secure-upload-v4", uploadHeaders("0123456789abcde", "AAECAwQFBgc")),
            "400 Bad Request", "Authentication metadata missing"},
        {"short nonce prefix",
            request("POST", "/secure-upload-v4", uploadHeaders("0123456789abcdef", "AAECAwQFBg")),
            "400 Bad Request", "Authentication metadata missing"},
        {"65 headers", request("GET", "/", QByteArray("A: b\r\n").repeated(65)), tooLarge,
            "Too many headers"},
        {"endless head", "GET / HTTP/1.1\r\nA: " + QByteArray(65536, 'x'), tooLarge,
            "Headers too large"},
        {"not UTF-8", request("GET", "/", "A: \xFF\r\n"), "400 Bad Request", "Invalid headers"},
        {"long target", request("GET", '/' + QByteArray(4096, 'x'), ""), "414 URI Too Long",
            "URI too long"},
        {"long file name",
            request("GET", "/transfer-status", "X-Filename: " + QByteArray(4097, 'x') + "\r\n"),
            "400 Bad Request", "Invalid filename"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(support::answerTo(row.request), plainAnswer(row.status, row.body)) << row.what;
    }
    EXPECT_EQ(readiness(), ready);
}

TEST_F(HttpAnswers, withTwoProofsToAChallenge)
{
    support::PrivateHome::write(
        home_.settingsFile(), "[General]\nFerrylaneDeviceName=FL Office \xC3\xA4\n");
    ASSERT_EQ(program_.terminate(), 0);
    ASSERT_TRUE(program_.start());

    const QByteArray challenge = "AAECAwQFBgcICQoLDA0ODw";
    const QByteArray challengeBytes = QByteArray::fromHex("000102030405060708090a0b0c0d0e0f");
    const QByteArray name = "Office%20%C3%A4";
    const auto key = home_.key();
    EXPECT_EQ(support::answerTo(request(
                  "GET", "/secure-identify", "x-ferrylane-CHALLENGE:\t" + challenge + " \r\n")),
        "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\nCache-Control: no-store\r\n"
        "X-Ferrylane-Proof: "
            + hmacText(key, challengeBytes) + "\r\nX-Ferrylane-Name: " + name
            + "\r\nX-Ferrylane-Name-Proof: "
            + hmacText(key, "Ferrylane-name-v1\n" + challenge + '\n' + name) + "\r\n\r\n");
}

TEST_F(HttpAnswers, arriveAlthoughTheClientStillSends)
{
    // More than the service reads: a connection that is closed over unread bytes is reset, and the
    // answer lost.
    const QByteArray much = request("POST", "/upload", "") + QByteArray(3'000'000, 'x');
    EXPECT_EQ(support::answerTo(much),
        plainAnswer("426 Upgrade Required",
            "Legacy transfer route disabled; Ferrylane protocol v4 required"));
}
