#include "ReceiverTest.h"

// However a faultless stream is cut, the file is the same.

using namespace e2e;

namespace {

class Stream : public ReceiverTest {
protected:
    /// Sends `body` after the head of a file "a.bin" and expects `content` to be stored.
    void expectStored(const QByteArray& body, const QByteArray& content, const std::string& what)
    {
        EXPECT_EQ(support::answerTo(head(transferOf(u"a.bin"_s, content.size())) + body), stored)
            << what;
        const QString path = home_.receiveFolder() + u"/Pixel 8/a.bin"_s;
        EXPECT_EQ(support::PrivateHome::contentOf(path), content) << what;
        EXPECT_TRUE(QFile::remove(path)) << what;
    }

    [[nodiscard]] QByteArray recordStream(const QByteArray& content, qsizetype bytesPerRecord) const
    {
        QByteArray stream;
        for (const QByteArray& record :
            recordsOf(transferOf(u"a.bin"_s, content.size()), content, bytesPerRecord)) {
            stream += record;
        }
        return stream;
    }
};

} // namespace

TEST_F(Stream, recordsMayBeSplitAnywhereBetweenTwoChunks)
{
    const QByteArray content = "the quick brown";
    const QByteArray records = recordStream(content, 10);
    for (qsizetype i = 1; i < records.size(); ++i) {
        expectStored(
            support::chunk(records.first(i)) + support::chunk(records.sliced(i)) + "0\r\n\r\n",
            content, "split at " + std::to_string(i));
    }
}

TEST_F(Stream, chunksMayHoldAnyNumberOfRecords)
{
    const QByteArray content = support::testContent(5000);
    const QByteArray records = recordStream(content, 100);
    for (const qsizetype chunkSize : {qsizetype{1}, qsizetype{7}, qsizetype{1000}, records.size()}) {
        QByteArray body;
        for (qsizetype start = 0; start < records.size(); start += chunkSize) {
            body += support::chunk(records.mid(start, chunkSize));
        }
        expectStored(body + "0\r\n\r\n", content, "chunks of " + std::to_string(chunkSize));
    }
}

TEST_F(Stream, chunkSizesMayCarryExtensionsAndCapitals)
{
    const QByteArray content = "twenty-six bytes, 0x1A sum";
    const QByteArray records = recordStream(content, 26);
    const QByteArray data = records.first(50);
    const QByteArray end = records.sliced(50);
    struct Row {
        const char* what;
        QByteArray sizeLine;
    };
    for (const Row& row : {Row{"plain", "32"}, {"extension", "32;name=value"},
             {"blanks", " 32\t; a=\"b\""}, {"leading zeros", "00000032"}}) {
        expectStored(row.sizeLine + "\r\n" + data + "\r\n" + support::chunk(end)
                + "0;last\r\nTrailer: x\r\n\r\n",
            content, row.what);
    }
    expectStored("6A\r\n" + records + "\r\n0\r\n\r\n", content, "capital digits");
}

TEST_F(Stream, mayTrickleIn)
{
    const UploadBytes bytes = upload(u"slow.bin"_s, "content");
    support::TcpClient client;
    for (const char byte : bytes.all()) {
        ASSERT_TRUE(client.send(QByteArray(1, byte)));
    }
    EXPECT_EQ(client.receiveAll(), stored);
    EXPECT_EQ(home_.received(u"Pixel 8/slow.bin"_s), "content");
}

TEST_F(Stream, mayEndTogetherWithTheClientsSide)
{
    support::TcpClient client;
    client.send(upload(u"a.bin"_s, "content").all());
    client.finishSending();
    EXPECT_EQ(client.receiveAll(), stored);
}
