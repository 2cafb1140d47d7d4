#include "phone/HttpResponse.h"

#include <gtest/gtest.h>

using namespace ferrylane::phone;

namespace {

ParsedResponse parse(const QByteArray& received)
{
    return parseHttpResponse(platform::bytesOf(received));
}

} // namespace

TEST(HttpResponse, isReadAsSoonAsItIsWhole)
{
    struct Row {
        QByteArray received;
        int status;
        QByteArray statusText;
        QByteArray body;
    };
    const Row rows[] = {
        {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nREADY", 200, "200 OK", "READY"},
        {"HTTP/1.1 409 Conflict\r\ncontent-length:4\r\n\r\nBUSY", 409, "409 Conflict", "BUSY"},
        {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", 200, "200 OK", ""},
        {"HTTP/1.1 200\r\nContent-Length: 2\r\n\r\nabc", 200, "200", "ab"},
    };
    for (const Row& row : rows) {
        const auto parsed = parse(row.received);
        const auto* const response = std::get_if<HttpResponse>(&parsed);
        ASSERT_TRUE(response) << row.received.constData();
        EXPECT_EQ(response->status, row.status);
        EXPECT_EQ(response->statusText, row.statusText);
        EXPECT_EQ(response->body, row.body);
    }
}

TEST(HttpResponse, waitsForTheRest)
{
    const QByteArray whole = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nREADY";
    for (qsizetype length = 0; length < whole.size(); ++length) {
        EXPECT_TRUE(std::holds_alternative<NeedMore>(parse(whole.first(length)))) << length;
    }
}

TEST(HttpResponse, givesHeadersByName)
{
    const auto parsed = parse("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nX-Name:  a: b \r\n"
                              "x-name: second\r\n\r\n");
    const auto& response = std::get<HttpResponse>(parsed);
    EXPECT_EQ(response.header("X-NAME"), QByteArray("a: b"));
    EXPECT_FALSE(response.header("X-Other"));
}

TEST(HttpResponse, isMalformedWithoutStatusOrLength)
{
    const QByteArray rows[] = {
        "\r\n\r\n",
        "SSH-2.0-OpenSSH\r\n\r\n",
        "HTTP/1.1 OK\r\nContent-Length: 0\r\n\r\n",
        "HTTP/1.1 20\r\nContent-Length: 0\r\n\r\n",
        "HTTP/1.1 200 OK\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: 65537\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: 1 2\r\n\r\n",
        "HTTP/1.1 200 OK\r\nno colon\r\nContent-Length: 0\r\n\r\n",
        QByteArray(maximumResponseBytes + 1, 'x'),
    };
    for (const QByteArray& row : rows) {
        EXPECT_TRUE(std::holds_alternative<Malformed>(parse(row))) << row.first(40).constData();
    }
}
