#include "protocol/StreamReader.h"
#include "support/Fragments.h"
#include "support/MemorySource.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace ferrylane;
using support::chunk;
using support::sealedRecords;
using support::testContent;
using support::testKey;
using support::testTransfer;

namespace {

struct Read {
    QByteArray content;
    std::optional<StreamFailure> failure;
};

Read readAll(const V4Transfer& transfer, const QByteArray& body, std::size_t fragmentSize)
{
    support::MemorySource source(platform::bytesOf(body), fragmentSize);
    StreamReader reader(transfer, testKey(), source, {});
    Read read;
    for (;;) {
        const StreamStep step = reader.next();
        if (const auto* const failure = std::get_if<StreamFailure>(&step)) read.failure = *failure;
        if (!std::holds_alternative<platform::ByteView>(step)) return read;
        read.content += platform::toByteArray(std::get<platform::ByteView>(step));
    }
}

} // namespace

// The test vectors hold the faults of streams and the spellings of sizes; here are the edges.

TEST(StreamReader, opensFilesOfEveryAwkwardSize)
{
    for (const qsizetype size : {1048575, 1048576, 3145728}) {
        const QByteArray content = testContent(size);
        const V4Transfer transfer = testTransfer(size);
        const QByteArray body = support::chunkedBody(sealedRecords(testKey(), transfer, content));
        const Read read = readAll(transfer, body, 65536);
        EXPECT_FALSE(read.failure);
        EXPECT_TRUE(read.content == content) << size;
    }
}

TEST(StreamReader, opensRecordsWhereverTheChunksCutThem)
{
    const QByteArray content = testContent(30);
    const V4Transfer transfer = testTransfer(30);
    const auto records = sealedRecords(testKey(), transfer, content, 10);
    const QByteArray stream = std::accumulate(records.begin(), records.end(), QByteArray());
    for (qsizetype cut = 1; cut < stream.size(); ++cut) {
        for (const std::size_t fragmentSize : {std::size_t{1}, SIZE_MAX}) {
            const Read read = readAll(transfer,
                chunk(stream.left(cut)) + chunk(stream.mid(cut)) + "0\r\nTrailer: unread",
                fragmentSize);
            EXPECT_FALSE(read.failure) << cut;
            EXPECT_EQ(read.content, content) << cut;
        }
    }
}

TEST(StreamReader, refusesChunksBeyondTheirBounds)
{
    const QByteArray largest(2097152, 'x');
    const struct {
        const char* what;
        QByteArray body;
        StreamFailure failure;
    } rows[] = {
        {"the largest chunk", "200000\r\n" + largest + "\r\n", failures::recordOrderMismatch},
        {"one byte more", "200001\r\n" + largest + "x\r\n", failures::badChunkSize},
        {"a size line without its line feed", "5\r", failures::closedBeforeLastChunk},
        {"a chunk without its line break", "5\r\nhello", failures::closedBeforeLastChunk},
        {"128 bytes of a size line", QByteArray(128, '1'), failures::closedBeforeLastChunk},
        {"129 bytes of a size line", QByteArray(129, '1'), failures::chunkHeaderTooLarge},
    };
    for (const auto& row : rows) {
        for (const std::size_t size : support::fragmentSizes) {
            if (row.body.size() > 100000 && size < 31) continue;
            const Read read = readAll(testTransfer(-1), row.body, size);
            EXPECT_EQ(read.failure, row.failure) << row.what << ", fragments of " << size;
        }
    }
}
