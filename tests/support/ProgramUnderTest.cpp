#include "support/ProgramUnderTest.h"

#include "support/BadDisk.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>

#include <csignal>
#include <utility>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

namespace {

void slowDown(QProcessEnvironment& environment, const SlowDisk& disk)
{
    environment.insert(QStringLiteral("LD_PRELOAD"), disk.library);
    environment.insert(
        QString::fromLatin1(BadDisk::syncTimeVariable), QString::number(disk.syncTime.count()));
    // It wants to be the first of the libraries, which the preloaded one is.
    const QString options = QStringLiteral("ASAN_OPTIONS");
    environment.insert(
        options, environment.value(options) + QStringLiteral(":verify_asan_link_order=0"));
}

// What follows runs in the child, before the program.

bool enterMountNamespace()
{
    return unshare(CLONE_NEWNS) == 0 && mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

void mountSmallDisk(const char* path)
{
    if (!enterMountNamespace() || mount("tmpfs", path, "tmpfs", 0, "size=2m") != 0) _exit(127);
}

void limit(int resource, rlim_t value)
{
    const rlimit limits{value, value};
    if (setrlimit(resource, &limits) != 0) _exit(127);
}

} // namespace

bool canMount()
{
    const pid_t child = fork();
    if (child == 0) _exit(enterMountNamespace() ? 0 : 1);
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

ProgramUnderTest::ProgramUnderTest(const QString& program, const PrivateHome& home)
    : ProgramUnderTest(program, home, home.environment())
{
}

ProgramUnderTest::ProgramUnderTest(
    const QString& program, const PrivateHome& home, QProcessEnvironment environment)
    : home_(home), program_(program), environment_(std::move(environment))
{
}

bool ProgramUnderTest::start(const Scarcity& scarcity)
{
    return startUntilLogged("Server ready on port 8788", scarcity);
}

bool ProgramUnderTest::startUntilLogged(const QByteArray& text, const Scarcity& scarcity)
{
    logStart_ = home_.log().size();
    const QByteArray disk = QFile::encodeName(scarcity.smallDisk.value_or(QString()));
    if (!disk.isEmpty()) QDir().mkpath(*scarcity.smallDisk);
    Command command;
    command.program = program_;
    command.environment = environment_;
    if (scarcity.slowDisk) slowDown(command.environment, *scarcity.slowDisk);
    command.beforeProgram = [&scarcity, &disk] {
        if (!disk.isEmpty()) mountSmallDisk(disk.constData());
        if (scarcity.descriptors) limit(RLIMIT_NOFILE, *scarcity.descriptors);
        if (scarcity.bytesInFile) {
            std::signal(SIGXFSZ, SIG_IGN);
            limit(RLIMIT_FSIZE, *scarcity.bytesInFile);
        }
    };
    process_.start(command);
    return waitForLog(text);
}

std::optional<int> ProgramUnderTest::terminate()
{
    process_.signal(SIGTERM);
    return process_.waitForEnd(patience);
}

std::chrono::milliseconds ProgramUnderTest::processorTime() const
{
    const QByteArray stat = contentOf(QStringLiteral("/proc/%1/stat").arg(processId()));
    // The second field, the name in brackets, may hold blanks. utime and stime are fields 14
    // and 15.
    const auto fields = stat.sliced(stat.lastIndexOf(')') + 2).split(' ');
    const qint64 ticks = fields[11].toLongLong() + fields[12].toLongLong();
    return std::chrono::milliseconds(ticks * 1000 / sysconf(_SC_CLK_TCK));
}

bool ProgramUnderTest::waitForLog(const QByteArray& text) const
{
    return waitUntil([&] { return log().contains(text); });
}

} // namespace support
