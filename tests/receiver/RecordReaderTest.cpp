#include "receiver/RecordReader.h"
#include "support/Fragments.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <vector>

using namespace ferrylane;
using support::sealedRecords;
using support::testContent;
using support::testKey;
using support::testTransfer;

namespace {

/// Keeps the plaintext; from `failAfter` pieces on nothing can be stored.
class MemorySink final : public PlaintextSink {
public:
    platform::MutableByteView space(std::size_t length) override
    {
        piece_.resize(length);
        return piece_;
    }

    bool take(std::size_t length) override
    {
        stored = stored && pieces++ < failAfter;
        if (stored) content += platform::toByteArray(platform::ByteView(piece_).first(length));
        return stored;
    }

    platform::Sha256Digest digest() override
    {
        platform::Sha256 sha256;
        sha256.update(platform::bytesOf(content));
        return sha256.finish();
    }

    QByteArray content;
    std::size_t failAfter = SIZE_MAX;
    std::size_t pieces = 0;
    bool stored = true;

private:
    std::vector<std::byte> piece_;
};

struct Outcome {
    QByteArray failure;
    QByteArray content;
};

Outcome read(const QByteArray& stream, const V4Transfer& transfer, std::size_t fragmentSize)
{
    MemorySink sink;
    platform::Aes256Gcm cipher(testKey());
    RecordReader reader(transfer, cipher, sink);
    std::optional<StreamFailure> failure;
    support::inFragments(platform::bytesOf(stream), fragmentSize, [&](platform::ByteView fragment) {
        failure = reader.feed(fragment);
        return !failure;
    });
    if (!failure) failure = reader.finish();
    return {failure ? QByteArray(failure->text.latin1()) : QByteArray(), sink.content};
}

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

QByteArray changedAt(QByteArray bytes, qsizetype position)
{
    bytes[position] = static_cast<char>(bytes[position] ^ 1);
    return bytes;
}

QByteArray finalRecord(const QByteArray& digest, std::uint32_t countedRecords)
{
    // A sealer that has counted other records than the reader binds its final record to them.
    RecordSealer sealer(testKey(), testTransfer(30));
    platform::ByteBuffer buffer;
    for (std::uint32_t i = 0; i < countedRecords; ++i) {
        sealer.appendDataRecord(platform::bytesOf("0123456789"), buffer);
    }
    buffer.consume(buffer.size());
    platform::Sha256Digest bytes{};
    platform::copyBytes(platform::bytesOf(digest), bytes);
    sealer.appendFinalRecord(bytes, buffer);
    return platform::toByteArray(buffer.unread());
}

} // namespace

TEST(RecordReader, opensFilesOfEveryAwkwardSize)
{
    for (const qsizetype size : {0, 1, 1048575, 1048576, 1048577, 3145728}) {
        SCOPED_TRACE(size);
        const QByteArray content = testContent(size);
        const V4Transfer transfer = testTransfer(size);
        const Outcome outcome
            = read(joined(sealedRecords(testKey(), transfer, content)), transfer, 65536);
        EXPECT_EQ(outcome.failure, "");
        EXPECT_TRUE(outcome.content == content);
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

TEST(RecordReader, tellsEveryFaultHoweverTheStreamIsCut)
{
    const QByteArray content = testContent(30);
    const V4Transfer transfer = testTransfer(30);
    const std::vector<QByteArray> r = sealedRecords(testKey(), transfer, content, 10);
    const auto other = [&](auto change) {
        V4Transfer changed = transfer;
        change(changed);
        return joined(sealedRecords(testKey(), changed, content, 10));
    };
    const QByteArray whole = joined(r);
    const struct {
        const char* what;
        QByteArray stream;
        const char* failure;
    } rows[] = {
        {"faultless", whole, ""},
        {"nothing", "", "Authenticated completion record missing"},
        {"no final record", r[0] + r[1] + r[2], "Authenticated completion record missing"},
        {"final record cut short", whole.chopped(1), "Authenticated completion record missing"},
        {"a fragment behind the final record", whole + "1234567",
            "Trailing or incomplete encrypted data"},
        {"two records swapped", r[1] + r[0] + r[2] + r[3], "Record order mismatch"},
        {"a record left out", r[0] + r[2] + r[3], "Record order mismatch"},
        {"a record repeated", r[0] + r[0] + r[1] + r[2] + r[3], "Record order mismatch"},
        {"length 0", recordHead(0, 0), "Bad encrypted record length"},
        {"length one above the largest", recordHead(1048577, 0), "Bad encrypted record length"},
        {"the largest length that fits", recordHead(0xFFFFFFFF, 0), "Bad encrypted record length"},
        {"order is looked at before length", recordHead(0, 1), "Record order mismatch"},
        {"ciphertext changed", changedAt(whole, 8), "Authentication failed"},
        {"tag changed", changedAt(whole, r[0].size() - 1), "Authentication failed"},
        {"length field changed", changedAt(whole, 3), "Authentication failed"},
        {"another file name", other([](auto& t) { t.fileName = QStringLiteral("x"); }),
            "Authentication failed"},
        {"another transfer id", other([](auto& t) { t.id += u'x'; }), "Authentication failed"},
        {"another size", other([](auto& t) { t.fileSize = 31; }), "Authentication failed"},
        {"another nonce prefix", other([](auto& t) { t.noncePrefix[0] = std::byte{0}; }),
            "Authentication failed"},
        {"final record of length 31", r[0] + recordHead(31, finalRecordIndex),
            "Invalid final record"},
        {"final record changed", changedAt(whole, whole.size() - 20), "Authentication failed"},
        {"final record of a longer file", r[0] + r[1] + r[3], "Authentication failed"},
        {"digest of something else", r[0] + r[1] + r[2] + finalRecord(QByteArray(32, 'd'), 3),
            "SHA-256 mismatch"},
        {"final record twice", whole + r[3], "Duplicate final record"},
        {"data behind the final record", whole + r[0], "Data after final record"},
    };
    for (const auto& row : rows) {
        for (const std::size_t size : support::fragmentSizes) {
            SCOPED_TRACE(std::string(row.what) + ", fragments of " + std::to_string(size));
            EXPECT_EQ(read(row.stream, transfer, size).failure, row.failure);
        }
    }
}

TEST(RecordReader, comparesTheDeclaredSizeUnlessItIsUnknown)
{
    const struct {
        qint64 declared;
        const char* failure;
    } rows[] = {{30, ""}, {-1, ""}, {-5, ""}, {0, "Declared file size mismatch"},
        {29, "Declared file size mismatch"}, {31, "Declared file size mismatch"}};
    for (const auto& row : rows) {
        const V4Transfer transfer = testTransfer(row.declared);
        const QByteArray stream = joined(sealedRecords(testKey(), transfer, testContent(30), 10));
        EXPECT_EQ(read(stream, transfer, SIZE_MAX).failure, row.failure) << row.declared;
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
