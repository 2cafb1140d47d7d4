#include "ReceiverTest.h"

// Every failure of a stream that a phone can be told of. Two texts are missing, because no stream
// brings them about: an authentic record always has the length that its head gives, and a chunk is
// too small to make the record buffer overflow.

using namespace e2e;

namespace {

const QByteArray content = "the quick brown";

class FailureAnswers : public ReceiverTest {
protected:
    void SetUp() override
    {
        ReceiverTest::SetUp();
        const auto records = recordsOf(transfer_, content, 10);
        first_ = records[0];
        second_ = records[1];
        final_ = records[2];
    }

    [[nodiscard]] QByteArray finalRecord(const QByteArray& digestOf, qint64 declaredSize) const
    {
        auto transfer = transfer_;
        transfer.fileSize = declaredSize;
        platform::Sha256 digest;
        digest.update(platform::bytesOf(digestOf));
        ferrylane::RecordSealer sealer(home_.key(), transfer);
        platform::ByteBuffer records;
        sealer.appendDataRecord(platform::bytesOf(content), records);
        records.consume(records.size());
        sealer.appendFinalRecord(digest.finish(), records);
        return platform::toByteArray(records.unread());
    }

    void expectFailure(const QByteArray& request, const QByteArray& text, const char* what)
    {
        support::TcpClient client;
        client.send(request);
        EXPECT_EQ(client.receiveAll(), plainAnswer("400 Bad Request", text)) << what;
        EXPECT_TRUE(program_.waitForLog("  Secure V4 receive failed: " + text + '\n')) << what;
        expectNoTrace();
        EXPECT_EQ(home_.receivedFiles(), QStringList()) << what;
    }

    ferrylane::V4Transfer transfer_ = transferOf(u"a.bin"_s, content.size());
    QByteArray first_; ///< 10 bytes of plaintext
    QByteArray second_;
    QByteArray final_;
};

QByteArray withByteChanged(QByteArray record, qsizetype at)
{
    record[at] = static_cast<char>(record[at] ^ 1);
    return record;
}

/// A record's head alone.
QByteArray recordHead(std::uint32_t length, std::uint32_t index)
{
    std::array<std::byte, ferrylane::recordHeadBytes> bytes{};
    platform::writeU32BigEndian(length, bytes);
    platform::writeU32BigEndian(index, platform::MutableByteView(bytes).subspan(4));
    return platform::toByteArray(bytes);
}

} // namespace

TEST_F(FailureAnswers, tellWhatIsWrongWithTheChunks)
{
    struct Row {
        const char* what;
        QByteArray body;
        QByteArray text;
    };
    const Row rows[] = {
        {"no end of the size line", QByteArray(129, '1'), "HTTP chunk header too large"},
        {"not ASCII", "1\xC3\xA4\r\n", "Bad HTTP chunk header"},
        {"no digits", "\r\n", "Bad HTTP chunk size"},
        {"not hexadecimal", "1g\r\n", "Bad HTTP chunk size"},
        {"negative", "-1\r\n", "Bad HTTP chunk size"},
        {"too large", "200001\r\n", "Bad HTTP chunk size"},
        {"far too large", "FFFFFFFFFFFFFFFFFF\r\n", "Bad HTTP chunk size"},
        {"no line break after the data", "1\r\nxxx", "Malformed HTTP chunk"},
    };
    for (const Row& row : rows) {
        expectFailure(head(transfer_) + row.body, row.text, row.what);
    }
}

TEST_F(FailureAnswers, tellWhatIsWrongWithTheRecords)
{
    const QByteArray whole = first_ + second_ + final_;
    const QByteArray oversized = recordHead(1048577, 0);
    struct Row {
        const char* what;
        QByteArray records;
        QByteArray text;
    };
    const Row rows[] = {
        {"swapped", second_ + first_ + final_, "Record order mismatch"},
        {"repeated", first_ + first_, "Record order mismatch"},
        {"left out", second_ + final_, "Record order mismatch"},
        {"length 0, no more than its head", recordHead(0, 0), "Bad encrypted record length"},
        {"length above the limit", oversized, "Bad encrypted record length"},
        {"ciphertext changed", withByteChanged(first_, 8), "Authentication failed"},
        {"tag changed", withByteChanged(first_, first_.size() - 1), "Authentication failed"},
        {"final record changed", first_ + second_ + withByteChanged(final_, 8),
            "Authentication failed"},
        {"end moved forward", first_ + final_, "Authentication failed"},
        {"data after the end", whole + second_, "Data after final record"},
        {"final record too short", recordHead(31, 0xFFFFFFFF), "Invalid final record"},
        {"second end", whole + final_, "Duplicate final record"},
    };
    for (const Row& row : rows) {
        expectFailure(head(transfer_) + support::chunk(row.records), row.text, row.what);
    }
}

TEST_F(FailureAnswers, tellWhatIsWrongWithTheWhole)
{
    const QByteArray only = support::sealedRecords(home_.key(), transfer_, content)[0];
    expectFailure(head(transfer_) + support::chunk(only + finalRecord("other", content.size())),
        "SHA-256 mismatch", "digest of something else");

    auto longer = transfer_;
    longer.fileSize = content.size() + 1;
    const QByteArray data = support::sealedRecords(home_.key(), longer, content)[0];
    expectFailure(head(longer) + support::chunk(data + finalRecord(content, longer.fileSize)),
        "Declared file size mismatch", "shorter than declared");
}

TEST_F(FailureAnswers, tellThatTheKeyIsWrong)
{
    expectFailure(head(transfer_)
            + support::chunkedBody(
                support::sealedRecords(platform::SecretKey::random(), transfer_, content)),
        "Authentication failed", "wrong key");
    EXPECT_EQ(support::answerTo(upload(u"a.bin"_s, content).all()), stored);
}

TEST_F(FailureAnswers, tellThatTheStreamEndedTooEarly)
{
    const QByteArray whole = first_ + second_ + final_;
    expectFailure(
        head(transfer_) + "0\r\n\r\n", "Authenticated completion record missing", "nothing at all");
    expectFailure(head(transfer_) + support::chunk(first_ + second_) + "0\r\n\r\n",
        "Authenticated completion record missing", "no final record");
    expectFailure(head(transfer_) + support::chunk(first_ + second_.chopped(1)) + "0\r\n\r\n",
        "Authenticated completion record missing", "cut off in a record");
    expectFailure(head(transfer_) + support::chunk(whole + "rest") + "0\r\n\r\n",
        "Trailing or incomplete encrypted data", "bytes behind the end");
}

TEST_F(FailureAnswers, tellThatTheClientClosedItsSide)
{
    const QByteArray bodies[]
        = {"", "2", support::chunk(first_), support::chunk(first_ + second_ + final_)};
    for (const QByteArray& body : bodies) {
        support::TcpClient client;
        client.send(head(transfer_) + body);
        client.finishSending();
        EXPECT_EQ(client.receiveAll(),
            plainAnswer("400 Bad Request", "Connection closed before final HTTP chunk"));
        expectNoTrace();
    }
}
