#include "ReceiverTest.h"

#include "support/TestFiles.h"

#include <unistd.h>

// Disks that are full or slow.

using namespace e2e;

namespace {

class StorageFailure : public ReceiverTest {
protected:
    void SetUp() override {} // each test starts the program itself

    [[nodiscard]] QByteArray answerToUpload(const QString& name, const QByteArray& content) const
    {
        return support::answerTo(upload(name, content).all());
    }
};

} // namespace

TEST_F(StorageFailure, fullDiskIsTheUploadsFailureAndTheLogSaysWhy)
{
    support::Scarcity scarcity;
    if (support::canMount()) {
        scarcity.smallDisk = home_.receiveFolder();
    } else {
        scarcity.bytesInFile = 2 << 20;
    }
    const QByteArray cause = scarcity.smallDisk ? "No space left on device" : "File too large";
    ASSERT_TRUE(program_.start(scarcity));
    // The disk is mounted for the program alone, but can be seen through it.
    const QString folder = u"/proc/%1/root"_s.arg(program_.processId()) + home_.receiveFolder();

    const QByteArray failure = plainAnswer("400 Bad Request", "Authentication failed");
    EXPECT_EQ(answerToUpload(u"big.bin"_s, support::testContent(5'000'000)), failure);
    EXPECT_TRUE(program_.log().contains("  Could not write the upload: " + cause + '\n'))
        << program_.log().constData();
    EXPECT_TRUE(program_.log().contains("  Secure V4 receive failed: Authentication failed\n"));
    EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList());

    EXPECT_EQ(answerToUpload(u"small.bin"_s, support::testContent(1'000'000)), stored);
    EXPECT_EQ(
        support::contentOf(folder + u"/Pixel 8/small.bin"_s), support::testContent(1'000'000));
}

TEST_F(StorageFailure, slowDiskIsWaitedForAtTheEndOfTheProgram)
{
    support::Scarcity scarcity;
    scarcity.slowDisk = {QStringLiteral(FERRYLANE_BAD_DISK), std::chrono::milliseconds(500)};
    ASSERT_TRUE(program_.start(scarcity));
    support::TcpClient client;
    client.send(upload(u"a.bin"_s, "content").all());
    ASSERT_TRUE(support::waitUntil([this] {
        const QStringList partials = home_.partialFiles();
        return !partials.isEmpty() && home_.received(partials.first()) == "content";
    }));
    // Now it is being synced, then its folder.
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_EQ(program_.terminate(), 0);
    EXPECT_EQ(client.receiveAll(), stored);
    EXPECT_EQ(home_.received(u"Pixel 8/a.bin"_s), "content");
    EXPECT_TRUE(support::contentOf(home_.transferLogFile()).contains("a.bin"));
}
