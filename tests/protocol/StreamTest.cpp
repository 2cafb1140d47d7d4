#include "protocol/StreamWriter.h"
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

// The test vectors hold the faults of streams and the spellings of sizes; here are the edges.

TEST(StreamReader, opensFilesOfEveryAwkwardSize)
{
    for (const qsizetype size : {1048575, 1048576, 3145728}) {
        const QByteArray content = testContent(size);
        const V4Transfer transfer = testTransfer(size);
        const QByteArray body = support::chunkedBody(sealedRecords(testKey(), transfer, content));
        const auto read = support::readBody(testKey(), transfer, body, 65536);
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
            const auto read = support::readBody(testKey(), transfer,
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
            const auto read = support::readBody(testKey(), testTransfer(-1), row.body, size);
            EXPECT_EQ(read.failure, row.failure) << row.what << ", fragments of " << size;
        }
    }
}

TEST(V4Stream, bindsEveryRecordToItsTransfer)
{
    V4Transfer transfer = testTransfer(1048577);
    transfer.id = QStringLiteral("0123456789abcdef");
    transfer.fileName = QStringLiteral("n\u00E4me 1.txt");
    EXPECT_EQ(dataRecordAssociatedData(transfer, 0, 1048576),
        "Ferrylane-v4\n0123456789abcdef\nn\xC3\xA4me 1.txt\n1048577\n0\n1048576");
    EXPECT_EQ(dataRecordAssociatedData(transfer, 4294967294, 1),
        "Ferrylane-v4\n0123456789abcdef\nn\xC3\xA4me 1.txt\n1048577\n4294967294\n1");
    transfer.fileSize = -1;
    EXPECT_EQ(finalRecordAssociatedData(transfer, 2, 5000000000),
        "Ferrylane-v4-final\n0123456789abcdef\nn\xC3\xA4me 1.txt\n-1\n2\n5000000000");
}

TEST(StreamWriter, neverSealsWhatIsNoRecord)
{
    StreamWriter writer(testTransfer(0), testKey());
    platform::ByteBuffer out;
    for (const std::size_t length : {std::size_t{0}, maximumRecordPlaintext + 1}) {
        EXPECT_THROW(writer.write(std::vector<std::byte>(length), out), std::length_error);
    }
    EXPECT_TRUE(out.empty());
}

TEST(V4Stream, countsInTheNonceAsBigEndian)
{
    const NoncePrefix prefix = testTransfer(0).noncePrefix;
    EXPECT_EQ(platform::toByteArray(makeNonce(prefix, 0)).toHex(), "a0a1a2a3a4a5a6a700000000");
    EXPECT_EQ(
        platform::toByteArray(makeNonce(prefix, 0x01020304)).toHex(), "a0a1a2a3a4a5a6a701020304");
}
