#include "receiver/ChunkDecoder.h"
#include "support/Fragments.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ferrylane;
using Outcome = ChunkDecoder::Outcome;

namespace {

struct Decoded {
    std::vector<QByteArray> chunks;
    Outcome outcome = Outcome::needMore;
    QByteArray failure;
    QByteArray rest; ///< not consumed when the last chunk was seen
};

Decoded decode(const QByteArray& body, std::size_t fragmentSize)
{
    Decoded decoded;
    ChunkDecoder decoder;
    platform::ByteBuffer buffer;
    support::inFragments(platform::bytesOf(body), fragmentSize, [&](platform::ByteView fragment) {
        buffer.append(fragment);
        ChunkDecoder::Step step = decoder.next(buffer);
        for (; step.outcome == Outcome::chunk; step = decoder.next(buffer)) {
            decoded.chunks.push_back(platform::toByteArray(step.payload));
        }
        decoded.outcome = step.outcome;
        decoded.failure = step.failure.text.latin1();
        return step.outcome == Outcome::needMore;
    });
    decoded.rest = platform::toByteArray(buffer.unread());
    return decoded;
}

struct Row {
    const char* what;
    QByteArray body;
    std::vector<QByteArray> chunks;
    Outcome outcome;
    const char* failure = "";
};

const QByteArray largest(2097152, 'x');

std::vector<Row> rows()
{
    return {
        {"one chunk", "5\r\nhello\r\n0\r\n", {"hello"}, Outcome::lastChunk},
        {"two chunks", "1\r\na\r\n2\r\nbc\r\n0\r\n", {"a", "bc"}, Outcome::lastChunk},
        {"only the last chunk", "0\r\n", {}, Outcome::lastChunk},
        {"hexadecimal digits of both cases", "a\r\n0123456789\r\nB\r\n0123456789a\r\n0\r\n",
            {"0123456789", "0123456789a"}, Outcome::lastChunk},
        {"leading zeros", "0005\r\nhello\r\n000\r\n", {"hello"}, Outcome::lastChunk},
        {"extensions", "5;name=\"v\";x\r\nhello\r\n0;end\r\n", {"hello"}, Outcome::lastChunk},
        {"blanks around the size", " \t5 ;x\r\nhello\r\n0 \r\n", {"hello"}, Outcome::lastChunk},
        {"line breaks within a chunk", "4\r\n\r\n\r\n\r\n0\r\n", {"\r\n\r\n"}, Outcome::lastChunk},
        {"the largest chunk", "200000\r\n" + largest + "\r\n0\r\n", {largest}, Outcome::lastChunk},
        {"nothing yet", "5", {}, Outcome::needMore},
        {"a size line without its line feed", "5\r", {}, Outcome::needMore},
        {"a chunk without its line break", "5\r\nhello", {}, Outcome::needMore},
        {"128 bytes without a line break", QByteArray(128, '1'), {}, Outcome::needMore},
        {"129 bytes without a line break", QByteArray(129, '1'), {}, Outcome::failed,
            "HTTP chunk header too large"},
        {"a byte above 0x7F", "5\x80\r\nhello\r\n", {}, Outcome::failed, "Bad HTTP chunk header"},
        {"a byte above 0x7F in an extension", "5;\xC3\xA9\r\nhello\r\n", {}, Outcome::failed,
            "Bad HTTP chunk header"},
        {"no size", "\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"no size before an extension", ";x\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"no hexadecimal number", "5g\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"a hexadecimal prefix", "0x5\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"a plus sign", "+5\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"a minus sign", "-5\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"a blank within the size", "5 5\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"one byte above the largest chunk", "200001\r\n", {}, Outcome::failed,
            "Bad HTTP chunk size"},
        {"more than 64 bits", "10000000000000005\r\n", {}, Outcome::failed, "Bad HTTP chunk size"},
        {"no line break behind a chunk", "5\r\nhelloXY5\r\n", {}, Outcome::failed,
            "Malformed HTTP chunk"},
        {"a line feed alone behind a chunk", "1\r\na\n\r1\r\n", {}, Outcome::failed,
            "Malformed HTTP chunk"},
    };
}

} // namespace

TEST(ChunkDecoder, readsBodiesHoweverTheyAreCut)
{
    for (const Row& row : rows()) {
        for (const std::size_t size : support::fragmentSizes) {
            if (row.body.size() > 100000 && size < 31) continue;
            SCOPED_TRACE(std::string(row.what) + ", fragments of " + std::to_string(size));
            const Decoded decoded = decode(row.body, size);
            EXPECT_EQ(decoded.chunks, row.chunks);
            EXPECT_EQ(decoded.outcome, row.outcome);
            EXPECT_EQ(decoded.failure, row.failure);
        }
    }
}

TEST(ChunkDecoder, leavesTrailersUnread)
{
    const Decoded decoded = decode("0\r\nTrailer: x\r\n\r\n", SIZE_MAX);
    EXPECT_EQ(decoded.outcome, Outcome::lastChunk);
    EXPECT_EQ(decoded.rest, "Trailer: x\r\n\r\n");
}

TEST(ChunkDecoder, tellsHowMuchOfAChunkIsMissing)
{
    ChunkDecoder decoder;
    platform::ByteBuffer buffer;
    EXPECT_EQ(decoder.missingBytes(buffer), 0U);
    buffer.append(platform::bytesOf("10\r\nabc"));
    EXPECT_EQ(decoder.next(buffer).outcome, Outcome::needMore);
    EXPECT_EQ(decoder.missingBytes(buffer), 15U); // 13 bytes and the line break
    buffer.append(platform::bytesOf("0123456789012\r\n5"));
    EXPECT_EQ(decoder.missingBytes(buffer), 0U);
}
