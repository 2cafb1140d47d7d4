#include "protocol/ChunkDecoder.h"
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

// The test vectors hold the faults and the spellings of sizes; here are the edges.
std::vector<Row> rows()
{
    return {
        {"two chunks", "1\r\na\r\n2\r\nbc\r\n0\r\n", {"a", "bc"}, Outcome::lastChunk},
        {"line breaks within a chunk", "4\r\n\r\n\r\n\r\n0\r\n", {"\r\n\r\n"}, Outcome::lastChunk},
        {"the largest chunk", "200000\r\n" + largest + "\r\n0\r\n", {largest}, Outcome::lastChunk},
        {"a size line without its line feed", "5\r", {}, Outcome::needMore},
        {"a chunk without its line break", "5\r\nhello", {}, Outcome::needMore},
        {"128 bytes without a line break", QByteArray(128, '1'), {}, Outcome::needMore},
        {"129 bytes without a line break", QByteArray(129, '1'), {}, Outcome::failed,
            "HTTP chunk header too large"},
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
