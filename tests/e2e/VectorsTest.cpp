#include "ReceiverTest.h"

#include "support/TestFiles.h"
#include "support/TestVectors.h"

// The test vectors against the built program, over a real socket: every request, every answer that
// a stream can bring about, byte for byte.

using namespace e2e;
using namespace support;

namespace {

class Vectors : public ReceiverTest {
protected:
    void SetUp() override
    {
        writeFile(home_.keyFile(), vectorHex(vectorObject(u"received-bodies.json"_s)[u"key"]));
        writeFile(home_.settingsFile(), "[General]\nFerrylaneDeviceName=Office PC\n");
        ReceiverTest::SetUp();
    }
};

} // namespace

TEST_F(Vectors, requestsAreAnswered)
{
    for (const QJsonValue row : vectorRows(u"request-heads.json"_s)) {
        if (!row[u"answer"].isString()) continue;
        EXPECT_EQ(answerTo(vectorBytes(row[u"request"])), vectorBytes(row[u"answer"]))
            << vectorTrace(row);
    }
    EXPECT_EQ(readiness(), ready);
}

TEST_F(Vectors, challengesAreAnswered)
{
    for (const QJsonValue row : vectorRows(u"identify.json"_s, u"rows"_s)) {
        if (row[u"name"] != u"Office PC"_s || !row[u"challenge"].isString()) continue;
        const QByteArray header
            = "x-ferrylane-CHALLENGE:\t" + row[u"challenge"].toString().toUtf8();
        EXPECT_EQ(answerTo("GET /secure-identify HTTP/1.1\r\n" + header + " \r\n\r\n"),
            vectorBytes(row[u"answer"]))
            << vectorTrace(row);
    }
}

TEST_F(Vectors, bodiesAreStoredOrRefused)
{
    const QJsonObject file = vectorObject(u"received-bodies.json"_s);
    const QString path = home_.receiveFolder() + u"/Pixel 8/photo.jpg"_s;
    constexpr int failuresLoggedASecond = 10;
    int failures = 0;
    for (const QJsonValue row : vectorRows(u"received-bodies.json"_s, u"rows"_s)) {
        SCOPED_TRACE(vectorTrace(row));
        const QByteArray text = row[u"text"].toString().toUtf8();
        TcpClient client;
        client.send(vectorBytes(row[u"head"].isString() ? row[u"head"] : file[u"head"])
            + vectorHex(row[u"body"]));
        client.finishSending();
        EXPECT_EQ(client.receiveAll(), plainAnswer(row[u"status"].toString().toUtf8(), text));
        expectNoTrace();
        if (text == "OK SHA256") {
            EXPECT_EQ(contentOf(path), vectorBytes(file[u"content"]));
            EXPECT_TRUE(QFile::remove(path));
        } else {
            EXPECT_TRUE(program_.waitForLog("  Secure V4 receive failed: " + text + '\n'));
            if (++failures % failuresLoggedASecond == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1200));
            }
        }
        EXPECT_EQ(home_.receivedFiles(), QStringList());
    }
}

TEST_F(Vectors, answersArriveAlthoughTheClientStillSends)
{
    // More than the service reads: a connection that is closed over unread bytes is reset, and the
    // answer lost.
    const QByteArray much = "POST /secure-upload HTTP/1.1\r\n\r\n" + QByteArray(3'000'000, 'x');
    EXPECT_TRUE(answerTo(much).startsWith("HTTP/1.1 426 Upgrade Required\r\n"));
}
