#include "protocol/RequestHeadParser.h"
#include "support/Fragments.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace ferrylane;

namespace {

struct Parsed {
    std::optional<RequestHead> head;
    QByteArray refusal; ///< status and body
    std::size_t length = 0;
};

Parsed parse(const QByteArray& bytes, std::size_t fragmentSize = SIZE_MAX)
{
    Parsed parsed;
    RequestHeadParser parser;
    QByteArray received;
    support::inFragments(platform::bytesOf(bytes), fragmentSize, [&](platform::ByteView fragment) {
        received += platform::toByteArray(fragment);
        const auto result = parser.parse(platform::bytesOf(received));
        if (const auto* const answer = std::get_if<HttpAnswer>(&result)) {
            parsed.refusal = answer->status.toByteArray() + '|' + answer->body;
        } else if (const auto* const complete = std::get_if<RequestHeadParser::Complete>(&result)) {
            parsed.head = complete->head;
            parsed.length = complete->length;
        }
        return std::holds_alternative<RequestHeadParser::NeedMore>(result);
    });
    return parsed;
}

QByteArray withHeaders(const QByteArray& headers)
{
    return "POST /secure-upload-v4 HTTP/1.1\r\n" + headers + "\r\n\r\n";
}

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

// The test vectors hold the common cases; here are the odd ones.

TEST(RequestHeadParser, readsTheRequestLine)
{
    const struct {
        const char* head;
        const char* method;
        const char* target;
    } rows[] = {
        {"GET /transfer-status HTTP/1.1\r\n\r\n", "GET", "/transfer-status"},
        {"GET /a?b=c%20d HTTP/1.1\r\nHost: x\r\n\r\n", "GET", "/a?b=c%20d"},
        {"  GET   /a   HTTP/1.1 and more\r\n\r\n", "GET", "/a"},
        {"get /a\r\n\r\n", "get", "/a"},
        {"GET\r\n\r\n", "GET", "/"},
        {"\r\n\r\n", "", "/"},
        {"GET\t/a HTTP/1.1\r\n\r\n", "GET\t/a", "HTTP/1.1"},
        {"GET /\xC3\xA4 HTTP/1.1\r\n\r\n", "GET", "/\xC3\xA4"},
    };
    for (const auto& row : rows) {
        for (const std::size_t size : support::fragmentSizes) {
            SCOPED_TRACE(std::string(row.head) + ", fragments of " + std::to_string(size));
            const Parsed parsed = parse(row.head, size);
            ASSERT_TRUE(parsed.head);
            EXPECT_EQ(parsed.head->method, text(row.method));
            EXPECT_EQ(parsed.head->target, text(row.target));
        }
    }
}

TEST(RequestHeadParser, readsTheHeaders)
{
    const auto fileName = [](const RequestHead& h) { return h.fileName; };
    const auto size = [](const RequestHead& h) { return QString::number(h.declaredFileSize); };
    const auto chunked = [](const RequestHead& h) {
        return h.chunked ? QStringLiteral("chunked") : QStringLiteral("plain");
    };
    const auto id = [](const RequestHead& h) { return h.transferId.value_or(QStringLiteral("-")); };
    const auto challenge
        = [](const RequestHead& h) { return h.challenge.value_or(QStringLiteral("-")); };
    const struct {
        const char* headers;
        std::function<QString(const RequestHead&)> field;
        const char* expected;
    } rows[] = {
        {"x-filename:a%2Fb", fileName, "a/b"},
        {"X-FILENAME: \t n%C3%A4me \t ", fileName, "n\xC3\xA4me"},
        {"X-Filename: first\r\nX-Filename: 100%", fileName, "first"},
        {"X-Filename: ", fileName, ""},
        {"X-Filename:", fileName, "file"},
        {" X-Filename: a", fileName, "file"},
        {"::X-Filename: a:b", fileName, "a:b"},
        {"X-Filename", fileName, "file"},
        {"X-Ferrylane-File-Size: -5", size, "-5"},
        {"X-Ferrylane-File-Size: 9223372036854775807", size, "9223372036854775807"},
        {"X-Ferrylane-File-Size: 1 2", size, "-1"},
        {"X-Ferrylane-File-Size: +-5", size, "-1"},
        {"X-Ferrylane-File-Size: +", size, "-1"},
        {"X-Ferrylane-File-Size: 5\r\nX-Ferrylane-File-Size: x", size, "-1"},
        {"Transfer-Encoding: chunked\r\nTransfer-Encoding: gzip", chunked, "chunked"},
        {"Transfer-Encoding: gzip", chunked, "plain"},
        {"X-Ferrylane-Transfer-ID: abc%20", id, "abc%20"},
        {"X-Ferrylane-Transfer-ID: a\r\nX-Ferrylane-Transfer-ID: b", id, "b"},
        {"X-Ferrylane-Challenge: q_-=", challenge, "q_-="},
    };
    for (const auto& row : rows) {
        for (const std::size_t fragmentSize : support::fragmentSizes) {
            SCOPED_TRACE(
                std::string(row.headers) + ", fragments of " + std::to_string(fragmentSize));
            const Parsed parsed = parse(withHeaders(row.headers), fragmentSize);
            ASSERT_TRUE(parsed.head);
            EXPECT_EQ(row.field(*parsed.head), text(row.expected));
        }
    }
}

TEST(RequestHeadParser, keepsToItsLimits)
{
    const auto target = [](const QByteArray& t) { return "GET /" + t + " HTTP/1.1\r\n\r\n"; };
    // One user-perceived character of 8 bytes: a letter and three combining marks.
    const QByteArray cluster = "e\xCC\x81\xCC\x82\xCC\x83";
    const struct {
        const char* what;
        QByteArray bytes;
        const char* refusal;
    } rows[] = {
        {"target of 4096 clusters", target(cluster.repeated(4095)), ""},
        {"target of 4097 clusters", target(cluster.repeated(4096)),
            "414 URI Too Long|URI too long"},
        {"empty lines count",
            "GET / HTTP/1.1" + QByteArray("\r\nA: b").repeated(63) + "\r\nx\r\ny\r\n\r\n",
            "431 Request Header Fields Too Large|Too many headers"},
        {"name with a carriage return", withHeaders("X-Filename: a\rb"),
            "400 Bad Request|Invalid filename"},
        {"a surrogate in UTF-8", withHeaders("A: \xED\xA0\x80"), "400 Bad Request|Invalid headers"},
    };
    for (const auto& row : rows) {
        for (const std::size_t size : support::fragmentSizes) {
            if (row.bytes.size() > 50000 && size < 31) continue;
            SCOPED_TRACE(std::string(row.what) + ", fragments of " + std::to_string(size));
            const Parsed parsed = parse(row.bytes, size);
            EXPECT_EQ(parsed.refusal, row.refusal);
            EXPECT_EQ(parsed.head.has_value(), parsed.refusal.isEmpty());
        }
    }
}

TEST(RequestHeadParser, aHeadThatIsTooLongIsRefusedAsSoonAsThatShows)
{
    const QByteArray tooLong(65537, 'x');
    EXPECT_EQ(parse(tooLong.chopped(1)).refusal, "");
    EXPECT_EQ(parse(tooLong).refusal, "431 Request Header Fields Too Large|Headers too large");
    EXPECT_EQ(parse(tooLong + "\r\n\r\n").refusal, "400 Bad Request|Invalid headers");
    EXPECT_EQ(parse(tooLong + "\r\n\r\n", 1).refusal,
        "431 Request Header Fields Too Large|Headers too large");
}

TEST(RequestHeadParser, theBodyBeginsBehindTheEmptyLine)
{
    const Parsed parsed = parse("POST /a HTTP/1.1\r\n\r\n\r\n\r\nbody");
    ASSERT_TRUE(parsed.head);
    EXPECT_EQ(parsed.length, 20U);
}
