#include "protocol/RequestHeadParser.h"
#include "protocol/Routing.h"

#include <gtest/gtest.h>

using namespace ferrylane;

namespace {

RequestHeadParser::Result parse(const QByteArray& bytes)
{
    return RequestHeadParser().parse(platform::bytesOf(bytes));
}

QByteArray refusalOf(const QByteArray& bytes)
{
    const auto parsed = parse(bytes);
    const auto* const answer = std::get_if<HttpAnswer>(&parsed);
    return answer ? answer->body : QByteArray();
}

} // namespace

// The test vectors hold requests, in fragments of every size.

TEST(RequestHeadParser, aHeadThatIsTooLongIsRefusedAsSoonAsThatShows)
{
    const QByteArray tooLong(65537, 'x');
    EXPECT_EQ(refusalOf(tooLong.chopped(1)), "");
    EXPECT_EQ(refusalOf(tooLong), "Headers too large");
    EXPECT_EQ(refusalOf(tooLong + "\r\n\r\n"), "Invalid headers");
}

TEST(RequestHeadParser, theBodyBeginsBehindTheEmptyLine)
{
    const auto parsed = parse("POST /a HTTP/1.1\r\n\r\n\r\n\r\nbody");
    EXPECT_EQ(std::get<RequestHeadParser::Complete>(parsed).length, 20U);
}

TEST(Route, theLandingPageIsTheOneThatPhonesKnow)
{
    const auto parsed = parse("GET /?flkey=abc HTTP/1.1\r\n\r\n");
    const Route page = route(std::get<RequestHeadParser::Complete>(parsed).head);
    const auto& answer = std::get<HttpAnswer>(page);
    EXPECT_EQ(answer.contentType, "text/html; charset=utf-8");
    EXPECT_EQ(answer.body.size(), 1326);
    EXPECT_TRUE(answer.body.startsWith("<!doctype html><meta name=viewport"));
    EXPECT_TRUE(answer.body.contains("location.href='ferrylane://receive?url='"));
    EXPECT_TRUE(answer.body.endsWith("};\n</script>"));
}
