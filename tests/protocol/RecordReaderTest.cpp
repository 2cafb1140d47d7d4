#include "protocol/RecordReader.h"
#include "support/MemorySink.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

using namespace ferrylane;
using support::MemorySink;
using support::sealedRecords;
using support::testContent;
using support::testKey;
using support::testTransfer;

namespace {

QByteArray joined(const std::vector<QByteArray>& records)
{
    return std::accumulate(records.begin(), records.end(), QByteArray());
}

QByteArray recordHead(std::uint32_t length, std::uint32_t index)
{
    std::array<std::byte, recordHeadBytes> head{};
    platform::writeU32BigEndian(length, head);
    platform::writeU32BigEndian(index, platform::MutableByteView(head).subspan(4));
    return platform::toByteArray(head);
}

} // namespace

// The test vectors hold the faults of streams.

TEST(RecordReader, opensFilesOfEveryAwkwardSize)
{
    for (const qsizetype size : {1048575, 1048576, 3145728}) {
        const QByteArray content = testContent(size);
        const V4Transfer transfer = testTransfer(size);
        const QByteArray stream = joined(sealedRecords(testKey(), transfer, content));
        MemorySink sink;
        platform::Aes256Gcm cipher(testKey());
        RecordReader reader(transfer, cipher, sink);
        for (qsizetype start = 0; start < stream.size(); start += 65536) {
            ASSERT_FALSE(reader.feed(platform::bytesOf(stream.mid(start, 65536))));
        }
        EXPECT_FALSE(reader.finish());
        EXPECT_TRUE(sink.content == content) << size;
    }
}

TEST(RecordReader, opensRecordsWhereverTheStreamIsCut)
{
    const QByteArray content = testContent(30);
    const V4Transfer transfer = testTransfer(30);
    const QByteArray stream = joined(sealedRecords(testKey(), transfer, content, 10));
    for (qsizetype cut = 0; cut <= stream.size(); ++cut) {
        MemorySink sink;
        platform::Aes256Gcm cipher(testKey());
        RecordReader reader(transfer, cipher, sink);
        EXPECT_FALSE(reader.feed(platform::bytesOf(stream.left(cut)))) << cut;
        EXPECT_FALSE(reader.feed(platform::bytesOf(stream.mid(cut)))) << cut;
        EXPECT_FALSE(reader.finish()) << cut;
        EXPECT_EQ(sink.content, content) << cut;
    }
}

TEST(RecordReader, refusesMoreThanItMayHold)
{
    MemorySink sink;
    platform::Aes256Gcm cipher(testKey());
    RecordReader reader(testTransfer(-1), cipher, sink);
    const QByteArray most = recordHead(1048576, 0) + QByteArray(4194296, 'x');
    EXPECT_EQ(reader.feed(platform::bytesOf(most + 'x')), failures::bufferLimitExceeded);
    EXPECT_EQ(reader.feed(platform::bytesOf(most)), failures::authenticationFailed);
}

TEST(RecordReader, reportsAPieceThatCouldNotBeStored)
{
    const V4Transfer transfer = testTransfer(30);
    const QByteArray stream = joined(sealedRecords(testKey(), transfer, testContent(30), 10));
    for (const std::size_t stored : {0U, 1U, 2U}) {
        MemorySink sink;
        sink.failAfter = stored;
        platform::Aes256Gcm cipher(testKey());
        RecordReader reader(transfer, cipher, sink);
        EXPECT_EQ(reader.feed(platform::bytesOf(stream)), failures::authenticationFailed);
        EXPECT_EQ(sink.content.size(), static_cast<qsizetype>(10 * stored));
    }
}

TEST(RecordReader, countsWhatTheCipherGivesBack)
{
    /// Claims to have opened one byte less than there is.
    class ShortCipher final : public platform::Aead {
    public:
        void seal(const platform::GcmNonce&, platform::ByteView, platform::ByteView,
            platform::MutableByteView) override
        {
        }
        std::optional<std::size_t> open(const platform::GcmNonce&, platform::ByteView,
            platform::ByteView sealed, platform::MutableByteView) override
        {
            return sealed.size() - platform::gcmTagBytes - 1;
        }
    };
    MemorySink sink;
    ShortCipher cipher;
    RecordReader reader(testTransfer(10), cipher, sink);
    EXPECT_EQ(reader.feed(platform::bytesOf(recordHead(10, 0) + QByteArray(26, 'x'))),
        failures::recordLengthMismatch);
    EXPECT_EQ(sink.pieces, 0U);
}
