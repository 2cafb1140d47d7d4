#include "ReceiverTest.h"

#include "support/TestFiles.h"

#include <QFile>

#include <stdexcept>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

// What is wrong with the files in the user's home never keeps the program from starting.

using namespace e2e;

namespace {

// In the child: this folder is read-only for it alone.
void mountReadOnly(const char* folder)
{
    const bool isDone = unshare(CLONE_NEWNS) == 0
        && mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
        && mount(folder, folder, nullptr, MS_BIND, nullptr) == 0
        && mount("", folder, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
    if (!isDone) _exit(127);
}

bool isReady()
{
    try {
        return readiness() == ready;
    } catch (const std::runtime_error&) {
        return false; // refused
    }
}

} // namespace

TEST(DamagedHome, damagedFilesAreAsGoodAsNone)
{
    const support::PrivateHome home;
    const QString data = home.path() + u"/.local/share/Ferrylane/"_s;
    const QByteArray damage("\x00\xff[[[not what it was", 21);
    for (const QString& file : {home.settingsFile(), home.transferLogFile(), home.keyFile(),
             data + u"paired-targets-v2.json"_s, data + u"paired-target-v1.json"_s}) {
        support::writeFile(file, damage);
    }
    support::ProgramUnderTest program(receiverProgram, home);
    ASSERT_TRUE(program.start()) << home.log().constData();
    EXPECT_EQ(readiness(), ready);
    EXPECT_EQ(home.key().bytes().size(), 32U);
    EXPECT_EQ(program.terminate(), 0);
}

TEST(DamagedHome, readOnlyHomeIsServedFrom)
{
    const support::PrivateHome home;
    const QByteArray folder = QFile::encodeName(home.path());
    const bool canMount = support::canMount();
    // Whoever may not mount is not root, whom permissions would not stop.
    ASSERT_TRUE(canMount || chmod(folder.constData(), 0500) == 0);
    support::ChildProcess program;
    program.start(
        {.program = receiverProgram, .environment = home.environment(), .beforeProgram = [&] {
             if (canMount) mountReadOnly(folder.constData());
         }});
    EXPECT_TRUE(support::waitUntil(isReady));
    EXPECT_TRUE(program.isRunning());
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForEnd(support::patience), 0);
    chmod(folder.constData(), 0700);
    EXPECT_EQ(home.allFiles(), QStringList());
}
