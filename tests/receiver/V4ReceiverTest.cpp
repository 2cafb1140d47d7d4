#include "core/StoragePaths.h"
#include "pairing/ReceiverKeyStore.h"
#include "support/BadDisk.h"
#include "support/ServiceFixture.h"
#include "support/TcpClient.h"
#include "support/TestFiles.h"
#include "support/UploadStream.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

using namespace ferrylane;
using namespace std::chrono_literals;
using support::answerTo;
using support::statusRequest;
using support::summary;
using support::TcpClient;

namespace {

class V4ReceiverTest : public support::ServiceFixture {
protected:
    void SetUp() override
    {
        key_ = std::make_unique<platform::SecretKey>(loadOrCreateFerrylaneKey());
        startServer();
    }

    [[nodiscard]] QByteArray upload(const QString& name, const QByteArray& content) const
    {
        V4Transfer transfer = support::testTransfer(content.size());
        transfer.fileName = name;
        return support::uploadRequest(*key_, transfer, content);
    }

    struct Pieces {
        QByteArray begun; ///< the head and the first of several records
        QByteArray rest;
    };

    [[nodiscard]] Pieces uploadInPieces() const
    {
        const V4Transfer transfer = support::testTransfer(30);
        const auto records = support::sealedRecords(*key_, transfer, support::testContent(30), 10);
        QByteArray begun
            = uploadRequestHead(transfer, QStringLiteral("h"), 1, QStringLiteral("Pixel 8"))
            + support::chunk(records.front());
        return {std::move(begun), support::chunkedBody({records.begin() + 1, records.end()})};
    }

    [[nodiscard]] QByteArray uploadBegun() const { return uploadInPieces().begun; }

    void waitUntilStarted(qsizetype count = 1)
    {
        ASSERT_TRUE(support::processEventsUntil(
            [&] { return told().count(QStringLiteral("started photo.jpg")) == count; }));
    }

    [[nodiscard]] static QByteArray content(const QString& item)
    {
        return support::contentOf(received(item));
    }

    std::unique_ptr<platform::SecretKey> key_;
};

} // namespace

TEST_F(V4ReceiverTest, storesAFileAndTellsOfIt)
{
    const QByteArray bytes = support::testContent(100000);
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("a/b.txt"), bytes))), "200 OK|OK SHA256");
    ASSERT_TRUE(waitUntilTold(QStringLiteral("stored")));
    // The main thread was busy up to now: it hears of the end alone.
    EXPECT_EQ(told(), QStringList(QStringLiteral("stored a_b.txt")));
    EXPECT_EQ(content(QStringLiteral("Pixel 8/a_b.txt")), bytes);
    EXPECT_EQ(receivedItems(), QStringList{QStringLiteral("Pixel 8")});
    EXPECT_EQ(lastReceivedFile()->path, received(QStringLiteral("Pixel 8/a_b.txt")));
    EXPECT_EQ(lastReceivedFile()->size, 100000);
    EXPECT_EQ(logCount("Secure V4 received 100000 bytes to "), 1);
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
}

TEST_F(V4ReceiverTest, reportsProgressInStepsAndSpeedOnceASecond)
{
    const QByteArray bytes = support::testContent(100);
    const V4Transfer transfer = support::testTransfer(100);
    const auto records = support::sealedRecords(*key_, transfer, bytes, 1);
    TcpClient client;
    client.send(uploadRequestHead(transfer, QStringLiteral("h"), 1, QStringLiteral("Pixel 8"))
        + support::chunk(records[0]));
    waitUntilStarted();
    for (std::size_t i = 1; i < records.size(); ++i) {
        if (i == 50) {
            // Halfway, after two seconds.
            ASSERT_TRUE(waitUntilTold(QStringLiteral("progress 0.5 0")));
            clock().advance(2s);
        }
        client.send(support::chunk(records[i]));
        if (i == 50) {
            ASSERT_TRUE(waitUntilTold(QStringLiteral("progress 0.5 2.55e-05")));
        }
    }
    client.send("0\r\n\r\n");
    EXPECT_EQ(summary(client.receiveAll()), "200 OK|OK SHA256");
    ASSERT_TRUE(waitUntilTold(QStringLiteral("stored")));

    // The start, at most the 40 steps and a speed, and the end.
    EXPECT_LE(told().size(), 43);
    EXPECT_EQ(told().first(), QStringLiteral("started photo.jpg"));
    EXPECT_EQ(told().last(), QStringLiteral("stored photo.jpg"));
    EXPECT_EQ(told().filter(QStringLiteral(" 2.55e-05")).size(),
        told().size() - 1 - told().indexOf(QStringLiteral("progress 0.5 2.55e-05")));
}

TEST_F(V4ReceiverTest, withoutASizeThereAreNoSteps)
{
    V4Transfer transfer = support::testTransfer(-1);
    EXPECT_EQ(summary(answerTo(support::uploadRequest(*key_, transfer, support::testContent(50)))),
        "200 OK|OK SHA256");
    ASSERT_TRUE(waitUntilTold(QStringLiteral("stored")));
    EXPECT_EQ(told().filter(QStringLiteral("progress")), QStringList());
}

TEST_F(V4ReceiverTest, aFaultIsLoggedAndTold)
{
    // In the second record, which the worker finds, and in a chunk.
    const QByteArray whole = upload(QStringLiteral("photo.jpg"), support::testContent(30));
    QByteArray changed = whole;
    changed[whole.size() - 20] ^= 1;
    const std::pair<QByteArray, QString> rows[]
        = {{changed, QStringLiteral("Authentication failed")},
            {whole.chopped(5) + "zz\r\n", QStringLiteral("Bad HTTP chunk size")}};
    for (const auto& [request, reason] : rows) {
        EXPECT_EQ(summary(answerTo(request)), "400 Bad Request|" + reason.toUtf8());
        EXPECT_EQ(receivedItems(), QStringList());
        ASSERT_TRUE(waitUntilTold(QStringLiteral("stopped ") + reason));
        EXPECT_EQ(logCount("Secure V4 receive failed: " + reason.toUtf8()), 1);
    }
}

TEST_F(V4ReceiverTest, silenceEndsAnUpload)
{
    destroyServer();
    startServer({.upload = {.firstRecord = 400ms, .silence = 800ms}});
    const QByteArray begun = uploadBegun();
    const QByteArray head = begun.first(begun.indexOf("\r\n\r\n") + 4);
    const QByteArray timedOut = "400 Bad Request|Connection error: Connection timed out";
    struct Row {
        QByteArray bytes;
        std::chrono::milliseconds atLeast;
        bool isTold;
    };
    // Bytes that are no authentic record buy a stranger no time.
    const Row rows[]
        = {{head, 400ms, false}, {head + "40\r\nabc", 400ms, false}, {begun, 800ms, true}};
    for (const Row& row : rows) {
        const auto begin = std::chrono::steady_clock::now();
        TcpClient client;
        client.send(row.bytes);
        EXPECT_EQ(summary(client.receiveAll()), timedOut);
        const auto elapsed = std::chrono::steady_clock::now() - begin;
        EXPECT_GE(elapsed, row.atLeast);
        EXPECT_LT(elapsed, row.atLeast + 2s);
        EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
        QCoreApplication::processEvents();
        EXPECT_EQ(!told().isEmpty(), row.isTold);
    }
    EXPECT_EQ(receivedItems(), QStringList());
}

TEST_F(V4ReceiverTest, oneUploadAtATime)
{
    TcpClient first;
    first.send(uploadBegun());
    waitUntilStarted();
    EXPECT_EQ(summary(answerTo(statusRequest)), "409 Conflict|BUSY");
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "x"))), "409 Conflict|BUSY");
    first.reset();
    ASSERT_TRUE(
        waitUntilTold(QStringLiteral("stopped Connection error: Connection reset by peer")));
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "x"))), "200 OK|OK SHA256");
}

TEST_F(V4ReceiverTest, refusesUploadsWhileSending)
{
    server().setOutboundBusy(true);
    EXPECT_EQ(summary(answerTo(statusRequest)), "409 Conflict|BUSY");
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "x"))), "409 Conflict|BUSY");
    server().setOutboundBusy(false);
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "x"))), "200 OK|OK SHA256");
}

TEST_F(V4ReceiverTest, aCancelledUploadLeavesNothingBehind)
{
    for (int i = 1; i <= 5; ++i) {
        TcpClient client;
        client.send(uploadBegun());
        waitUntilStarted(i);
        server().cancelActiveTransfer();
        ASSERT_TRUE(waitUntilTold(QStringLiteral("stopped Connection error: Operation canceled")));
        EXPECT_EQ(client.receiveAll(), "");
        EXPECT_EQ(receivedItems(), QStringList());
    }
    server().cancelActiveTransfer();
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
}

TEST_F(V4ReceiverTest, aCancelledUploadDoesNotFreeTheServiceOfTheNext)
{
    for (int i = 0; i < 20; ++i) {
        TcpClient first;
        first.send(uploadBegun());
        waitUntilStarted(2 * i + 1);
        server().cancelActiveTransfer();
        // Admitted although the first has not heard of its end yet.
        TcpClient second;
        second.send(uploadBegun());
        waitUntilStarted(2 * i + 2);
        ASSERT_TRUE(
            support::processEventsUntil([&] { return logCount("receive failed") == 2 * i + 1; }));
        EXPECT_EQ(summary(answerTo(statusRequest)), "409 Conflict|BUSY");
        server().cancelActiveTransfer();
        ASSERT_TRUE(
            support::processEventsUntil([&] { return logCount("receive failed") == 2 * i + 2; }));
    }
}

TEST_F(V4ReceiverTest, aStopCutsAnUploadOff)
{
    TcpClient client;
    client.send(uploadBegun());
    waitUntilStarted();
    server().stopService();
    ASSERT_TRUE(waitUntilTold(QStringLiteral("stopped Connection error: ")));
    EXPECT_EQ(receivedItems(), QStringList());
}

TEST_F(V4ReceiverTest, aRebindLeavesAnUploadAlone)
{
    const Pieces upload = uploadInPieces();
    TcpClient client;
    client.send(upload.begun);
    waitUntilStarted();
    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    client.send(upload.rest);
    EXPECT_EQ(summary(client.receiveAll()), "200 OK|OK SHA256");
    EXPECT_EQ(content(QStringLiteral("Pixel 8/photo.jpg")), support::testContent(30));
}

TEST_F(V4ReceiverTest, anUploadThatCannotBeginLeavesTheServiceFree)
{
    const QString folder = receiveDir();
    ASSERT_TRUE(QDir().rmdir(folder));
    support::writeFile(folder);
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "x"))),
        "500 Internal Server Error|Cannot create destination");
    QCoreApplication::processEvents();
    EXPECT_TRUE(told().isEmpty());
    ASSERT_TRUE(QFile::remove(folder));
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "x"))), "200 OK|OK SHA256");
}

TEST_F(V4ReceiverTest, anUploadThatCannotBeStoredIsRefusedWithTheCauseInTheLog)
{
    // The sender's folder cannot be made where there is a file.
    const QString inTheWay = received(QStringLiteral("Pixel 8"));
    support::writeFile(inTheWay);
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "x"))),
        "500 Internal Server Error|Cannot finalize destination");
    EXPECT_EQ(receivedItems(), QStringList{QStringLiteral("Pixel 8")});
    EXPECT_EQ(logCount("Could not store the upload: Not a directory"), 1);
    ASSERT_TRUE(QFile::remove(inTheWay));
}

TEST_F(V4ReceiverTest, anUploadEndsInTheFolderInWhichItBegan)
{
    const QString folder = receiveDir();
    const QString moved = folder + QStringLiteral(".moved");
    const Pieces upload = uploadInPieces();
    TcpClient whole;
    whole.send(upload.begun);
    waitUntilStarted();
    ASSERT_TRUE(QFile::rename(folder, moved));
    ASSERT_TRUE(QDir().mkdir(folder));
    whole.send(upload.rest);
    EXPECT_EQ(summary(whole.receiveAll()), "200 OK|OK SHA256");
    const QString stored = moved + QStringLiteral("/Pixel 8/photo.jpg");
    EXPECT_EQ(support::contentOf(stored), support::testContent(30));
    EXPECT_EQ(logCount("bytes to " + stored.toUtf8()), 1);
    EXPECT_EQ(support::everythingIn(folder), QStringList());

    TcpClient broken;
    broken.send(upload.begun);
    waitUntilStarted(2);
    ASSERT_TRUE(QFile::rename(folder, moved + QStringLiteral("/2")));
    broken.reset();
    ASSERT_TRUE(waitUntilTold(QStringLiteral("stopped")));
    EXPECT_EQ(support::everythingIn(moved + QStringLiteral("/2")), QStringList());
}

TEST_F(V4ReceiverTest, aSendersFolderMayBeOnAnotherDiskAndUnableToSync)
{
    const QTemporaryDir other(QStringLiteral("/dev/shm/ferrylane-test-XXXXXX"));
    ASSERT_TRUE(QFile::link(other.path(), received(QStringLiteral("Pixel 8"))));
    const QByteArray bytes = support::testContent(1000000);
    const support::BadDisk disk({.folderSyncError = EIO});
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), bytes))), "200 OK|OK SHA256");
    EXPECT_EQ(summary(answerTo(upload(QStringLiteral("x"), "y"))), "200 OK|OK SHA256");
    EXPECT_EQ(content(QStringLiteral("Pixel 8/x")), bytes);
    EXPECT_EQ(content(QStringLiteral("Pixel 8/x (1)")), "y");
    EXPECT_EQ(support::everythingIn(other.path()).size(), 2);
    EXPECT_EQ(receivedItems(), QStringList{QStringLiteral("Pixel 8")});
    EXPECT_EQ(logCount("a crash may undo that"), 4) << "each of two folders, each time";
}

TEST_F(V4ReceiverTest, aNameThatTheDiskDoesNotTakeIsMadeOneThatItTakes)
{
    const support::BadDisk disk({.windowsNames = true});
    for (const QString& name : {QStringLiteral("what?.txt"), QStringLiteral("what*.txt")}) {
        EXPECT_EQ(summary(answerTo(upload(name, name.toUtf8()))), "200 OK|OK SHA256");
    }
    EXPECT_EQ(content(QStringLiteral("Pixel 8/what_.txt")), "what?.txt");
    EXPECT_EQ(content(QStringLiteral("Pixel 8/what_ (1).txt")), "what*.txt");
}
