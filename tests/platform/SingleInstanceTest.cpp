#include "platform/SingleInstance.h"

#include "support/EnvironmentVariable.h"
#include "support/EventLoop.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace std::chrono_literals;
using support::EnvironmentVariable;
using support::processEventsUntil;

const QString program = QStringLiteral("Test");

class SingleInstanceTest : public ::testing::Test {
protected:
    using Outcome = SingleInstance::Outcome;

    /// A second launch, while this thread runs the first process's event loop.
    static Outcome launchAgain()
    {
        std::atomic<bool> done = false;
        Outcome outcome = Outcome::first;
        std::thread second([&] {
            outcome = SingleInstance(program, "devices", support::patience).outcome();
            done = true;
        });
        EXPECT_TRUE(processEventsUntil([&] { return done.load(); }));
        second.join();
        return outcome;
    }

    QTemporaryDir folder;
    EnvironmentVariable runtimeFolder{"XDG_RUNTIME_DIR", QFile::encodeName(folder.path())};
};

/// A process that has the claim and does nothing with it.
class SilentProcess {
public:
    SilentProcess()
    {
        std::array<int, 2> ready{};
        EXPECT_EQ(::pipe(ready.data()), 0);
        process_ = ::fork();
        if (process_ == 0) {
            const SingleInstance instance(program);
            const char outcome = instance.outcome() == SingleInstance::Outcome::first ? 'y' : 'n';
            if (::write(ready[1], &outcome, 1) == 1) ::pause();
            ::_exit(1);
        }
        char outcome = 0;
        EXPECT_EQ(::read(ready[0], &outcome, 1), 1);
        EXPECT_EQ(outcome, 'y');
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~SilentProcess() { kill(); }
    SilentProcess(const SilentProcess&) = delete;
    SilentProcess& operator=(const SilentProcess&) = delete;

    void kill()
    {
        if (process_ <= 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        process_ = 0;
    }

private:
    pid_t process_ = 0;
};

TEST_F(SingleInstanceTest, ALaterOneHandsOverToTheFirst)
{
    int shown = 0;
    auto first = std::make_unique<SingleInstance>(program);
    ASSERT_EQ(first->outcome(), Outcome::first);
    first->setRequestHandler([&](const QByteArray& request) {
        EXPECT_EQ(request, "devices");
        ++shown;
    });
    for (int launches = 1; launches <= 3; ++launches) {
        EXPECT_EQ(launchAgain(), Outcome::handedOver);
        EXPECT_EQ(shown, launches);
    }
    EXPECT_EQ(SingleInstance(QStringLiteral("Other")).outcome(), Outcome::first);

    first.reset();
    EXPECT_EQ(launchAgain(), Outcome::first);
    EXPECT_EQ(shown, 3);
}

TEST_F(SingleInstanceTest, OnlyADeadProcessLosesItsClaim)
{
    SilentProcess first;
    EXPECT_EQ(SingleInstance(program, "show", 100ms).outcome(), Outcome::unanswered);
    first.kill();
    EXPECT_EQ(SingleInstance(program, "show", 0ms).outcome(), Outcome::first);

    SilentProcess next;
    std::thread killer([&] {
        std::this_thread::sleep_for(50ms);
        next.kill();
    });
    // It waits for an answer meanwhile.
    EXPECT_EQ(SingleInstance(program, "devices", support::patience).outcome(), Outcome::first);
    killer.join();
}

TEST_F(SingleInstanceTest, AProcessThatEndsIsWaitedForLongerThanForAnAnswer)
{
    auto first = std::make_unique<SingleInstance>(program);
    first->setRequestHandler([](const QByteArray&) { FAIL(); });
    first->sayThatItEnds();
    std::atomic<bool> isOver = false;
    std::thread second([&] {
        EXPECT_EQ(SingleInstance(program, "show", 0ms).outcome(), Outcome::first);
        EXPECT_TRUE(isOver);
    });
    std::this_thread::sleep_for(200ms);
    isOver = true;
    first.reset();
    second.join();
}

TEST_F(SingleInstanceTest, OneOfManyThatStartTogetherIsFirst)
{
    for (int round = 0; round < 20 && !HasFailure(); ++round) {
        std::array<std::unique_ptr<SingleInstance>, 8> instances;
        std::atomic<int> claims = 0;
        std::atomic<int> done = 0;
        std::atomic<std::size_t> winner = 0;
        std::vector<std::thread> launches;
        for (std::size_t i = 0; i < instances.size(); ++i) {
            launches.emplace_back([&, i] {
                instances[i]
                    = std::make_unique<SingleInstance>(program, "devices", support::patience);
                if (instances[i]->outcome() == Outcome::first) {
                    winner = i;
                    ++claims;
                }
                ++done;
            });
        }
        EXPECT_TRUE(support::waitUntil([&] { return claims > 0; }));
        int shown = 0;
        instances[winner]->setRequestHandler([&](const QByteArray& request) {
            EXPECT_EQ(request, "devices");
            ++shown;
        });
        EXPECT_TRUE(processEventsUntil([&] { return done == 8; }));
        for (std::thread& launch : launches) {
            launch.join();
        }
        EXPECT_EQ(claims, 1);
        EXPECT_EQ(shown, 7);
        EXPECT_EQ(std::count_if(instances.begin(), instances.end(),
                      [](const auto& each) { return each->outcome() == Outcome::handedOver; }),
            7);
    }
}

TEST_F(SingleInstanceTest, UsesAFolderOfTheUsersOwnAlone)
{
    const QTemporaryDir temporary;
    const EnvironmentVariable temporaryFolder("TMPDIR", QFile::encodeName(temporary.path()));
    const QString fallback
        = temporary.filePath(QStringLiteral("%1-%2").arg(program).arg(::geteuid()));
    const QByteArray longPath = QFile::encodeName(folder.filePath(QString(200, u'x')));
    ASSERT_EQ(::mkdir(longPath.constData(), 0700), 0);
    const QByteArray openToOthers = QFile::encodeName(folder.filePath(QStringLiteral("open")));
    ASSERT_EQ(::mkdir(openToOthers.constData(), 0700), 0);
    ASSERT_EQ(::chmod(openToOthers.constData(), 0755), 0);

    const struct {
        QByteArray runtimeFolder;
        QString expected;
    } cases[] = {
        {longPath, QFile::decodeName(longPath) + u'/' + program},
        {"", fallback},
        {"relative", fallback},
        {"/nowhere/at/all", fallback},
        {openToOthers, fallback},
    };
    for (const auto& [value, expected] : cases) {
        SCOPED_TRACE(value.constData());
        runtimeFolder.set(value);
        SingleInstance first(program);
        EXPECT_EQ(first.outcome(), Outcome::first);
        struct stat status {};
        ASSERT_EQ(::stat(QFile::encodeName(expected).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0700U);
        first.setRequestHandler([](const QByteArray& /*request*/) {});
        EXPECT_EQ(launchAgain(), Outcome::handedOver);
    }

    ASSERT_EQ(::chmod(QFile::encodeName(fallback).constData(), 0777), 0);
    EXPECT_THROW(SingleInstance{program}, std::system_error);
}

} // namespace
} // namespace platform
