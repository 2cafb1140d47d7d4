#include "ReceiverTest.h"

#include "support/TestFiles.h"

#include <QFileInfo>

#include <sys/stat.h>

// Starting and ending the program.

using namespace e2e;

namespace {

mode_t modeOf(const QString& path)
{
    struct stat status {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
}

class Lifecycle : public ReceiverTest {};

} // namespace

TEST_F(Lifecycle, startsMakeKeyAndLogOnceForTheirOwnerAlone)
{
    EXPECT_EQ(support::contentOf(home_.keyFile()).size(), 32);
    EXPECT_EQ(modeOf(home_.keyFile()), 0600U);
    EXPECT_EQ(modeOf(QFileInfo(home_.keyFile()).path()), 0700U);
    EXPECT_EQ(modeOf(home_.logFile()), 0600U);
    EXPECT_TRUE(program_.log().contains("  Server ready on port 8788; Bonjour visible=true\n"));
    EXPECT_EQ(readiness(), ready);

    // At once, while the end of a connection that the service closed first is still on the port.
    const QByteArray key = support::contentOf(home_.keyFile());
    EXPECT_EQ(program_.terminate(), 0);
    ASSERT_TRUE(program_.start()) << program_.log().constData();
    EXPECT_EQ(support::contentOf(home_.keyFile()), key);
}

TEST_F(Lifecycle, aSecondProgramOnThePortSaysSoAndLivesOn)
{
    const support::PrivateHome otherHome;
    support::ProgramUnderTest second(receiverProgram, otherHome);
    ASSERT_TRUE(second.startUntilLogged("  Server listener failed: "));
    EXPECT_TRUE(second.waitForLog("Address already in use")) << second.log().constData();
    EXPECT_TRUE(second.waitForLog("Ferrylane service stopped")) << second.log().constData();
    EXPECT_TRUE(second.isRunning());

    EXPECT_EQ(readiness(), ready) << "the first one serves on";
    EXPECT_EQ(second.terminate(), 0);
    EXPECT_EQ(program_.terminate(), 0);
}

TEST_F(Lifecycle, aSecondLaunchEndsAndLeavesTheRunningUploadAlone)
{
    const auto bytes = upload(u"a.bin"_s, "content");
    support::TcpClient client;
    client.send(bytes.withoutEnd());
    ASSERT_TRUE(support::waitUntil([this] { return !home_.partialFiles().isEmpty(); }));

    support::ChildProcess second;
    second.start({.program = receiverProgram, .environment = home_.environment()});
    EXPECT_EQ(second.waitForEnd(support::patience), 0);
    client.send(bytes.end());
    EXPECT_EQ(client.receiveAll(), stored);
    EXPECT_EQ(home_.received(u"Pixel 8/a.bin"_s), "content");
}

TEST_F(Lifecycle, terminationInTheMiddleOfAnUploadLeavesNothing)
{
    support::TcpClient client;
    client.send(upload(u"a.bin"_s, "content").withoutEnd());
    ASSERT_TRUE(support::waitUntil([this] { return !home_.partialFiles().isEmpty(); }));
    support::TcpClient halfHead;
    halfHead.send("GET / HT");

    EXPECT_EQ(program_.terminate(), 0);
    EXPECT_EQ(home_.partialFiles(), QStringList());
    EXPECT_EQ(home_.receivedFiles(), QStringList());
    EXPECT_EQ(client.receiveAll(), "");
    EXPECT_EQ(halfHead.receiveAll(), "");
}

TEST_F(Lifecycle, nextStartRemovesWhatACrashLeft)
{
    support::TcpClient client;
    client.send(upload(u"a.bin"_s, "content").withoutEnd());
    ASSERT_TRUE(support::waitUntil([this] { return !home_.partialFiles().isEmpty(); }));
    program_.kill();
    const QStringList left = home_.partialFiles();
    ASSERT_EQ(left.size(), 1);

    ASSERT_TRUE(program_.startUntilLogged("  Removed unfinished upload " + left.first().toUtf8()));
    EXPECT_EQ(home_.partialFiles(), QStringList());
    EXPECT_EQ(program_.log().count("Removed unfinished upload"), 1);
    EXPECT_EQ(readiness(), ready);
}
