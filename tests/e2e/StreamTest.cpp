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
    for (const qsizetype chunkSize :
        {qsizetype{1}, qsizetype{7}, qsizetype{1000}, records.size()}) {
        QByteArray body;
        for (qsizetype start = 0; start < records.size(); start += chunkSize) {
            body += support::chunk(records.mid(start, chunkSize));
        }
        expectStored(body + "0\r\n\r\n", content, "chunks of " + std::to_string(chunkSize));
    }
}
