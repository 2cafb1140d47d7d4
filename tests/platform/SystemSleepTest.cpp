#include "platform/SystemSleep.h"

#include "support/EventLoop.h"
#include "support/PrivateBus.h"
#include "support/PrivateHome.h"
#include "support/StartDaemon.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using namespace std::chrono_literals;
using support::processEventsUntil;

const QString service = QStringLiteral("org.freedesktop.login1");
const QString manager = service + QStringLiteral(".Manager");

/// A computer's message bus and login manager.
class SystemSleepTest : public ::testing::Test {
protected:
    void startBus() { bus.start(); }

    void startLoginManager()
    {
        support::startDaemon(loginManager,
            {QStringLiteral("/usr/bin/python3"),
                {QStringLiteral("-um"), QStringLiteral("dbusmock"), QStringLiteral("--template"),
                    QStringLiteral("logind")},
                bus.environment(), file(QStringLiteral("log")), {}, {}},
            {});
        ASSERT_TRUE(support::waitUntil([&] {
            return send(QStringLiteral("org.freedesktop.DBus.Mock.AddMethod"),
                {QStringLiteral("string:") + manager, QStringLiteral("string:Sleep"),
                    QStringLiteral("string:b"), QStringLiteral("string:"),
                    QStringLiteral("string:self.EmitSignal('%1', 'PrepareForSleep', 'b', args)")
                        .arg(manager)});
        }));
    }

    void startAll()
    {
        startBus();
        startLoginManager();
    }

    void killAll()
    {
        bus.kill();
        loginManager.kill();
    }

    void prepareForSleep(const char* isAboutToSleep)
    {
        ASSERT_TRUE(send(manager + QStringLiteral(".Sleep"),
            {QStringLiteral("boolean:") + QString::fromLatin1(isAboutToSleep)}));
    }

    /// What keeps the computer awake, as a caller of the login manager reads it.
    QByteArray inhibitors()
    {
        EXPECT_TRUE(send(manager + QStringLiteral(".ListInhibitors"), {}));
        return support::PrivateHome::contentOf(file(QStringLiteral("reply")));
    }

    bool isInhibited() { return inhibitors().contains("struct"); }

    bool send(const QString& method, const QStringList& arguments)
    {
        support::ChildProcess program;
        program.start({QStringLiteral("/usr/bin/dbus-send"),
            QStringList{QStringLiteral("--bus=") + bus.address(), QStringLiteral("--print-reply"),
                QStringLiteral("--dest=") + service, QStringLiteral("/org/freedesktop/login1"),
                method}
                + arguments,
            bus.environment(), file(QStringLiteral("reply")), file(QStringLiteral("errors")), {}});
        return program.waitForEnd(support::patience) == 0;
    }

    [[nodiscard]] QString file(const QString& name) const { return folder.filePath(name); }

    [[nodiscard]] SystemBusAccess access() const { return {bus.address(), 50ms}; }

    QTemporaryDir folder;
    support::PrivateBus bus;
    support::ChildProcess loginManager;
};

TEST_F(SystemSleepTest, TellsOfWaking)
{
    startAll();
    int wakes = 0;
    auto notices = std::make_unique<WakeNotices>([&] { ++wakes; }, access());
    for (int sleeps = 1; sleeps <= 2; ++sleeps) {
        prepareForSleep("true");
        EXPECT_FALSE(processEventsUntil([&] { return wakes == sleeps; }, 50ms));
        prepareForSleep("false");
        EXPECT_TRUE(processEventsUntil([&] { return wakes == sleeps; }));
    }

    prepareForSleep("false");
    notices.reset();
    EXPECT_FALSE(processEventsUntil([&] { return wakes != 2; }, 50ms));
}

TEST_F(SystemSleepTest, KeepsAwakeWhileHeld)
{
    startAll();
    SleepInhibitor inhibitor(
        QStringLiteral("Some program"), QStringLiteral("Doing something"), access());
    EXPECT_FALSE(isInhibited());
    for (int i = 0; i < 2; ++i) {
        inhibitor.hold();
        inhibitor.hold();
        ASSERT_TRUE(processEventsUntil([&] { return isInhibited(); }));
        inhibitor.hold();
        const QByteArray all = inhibitors();
        EXPECT_EQ(all.count("struct"), 1) << all.constData();
        for (const char* text : {"sleep", "Some program", "Doing something", "block"}) {
            EXPECT_TRUE(all.contains(QByteArray("string \"") + text + '"')) << text;
        }

        inhibitor.release();
        inhibitor.release();
        EXPECT_TRUE(processEventsUntil([&] { return !isInhibited(); }));
    }
}

TEST_F(SystemSleepTest, LeavesNothingBehind)
{
    startAll();
    {
        SleepInhibitor inhibitor(QStringLiteral("a"), QStringLiteral("b"), access());
        for (int i = 0; i < 10; ++i) {
            inhibitor.hold();
            inhibitor.release();
        }
        EXPECT_TRUE(processEventsUntil([&] { return !isInhibited(); }));
        EXPECT_FALSE(processEventsUntil([&] { return isInhibited(); }, 50ms));
        inhibitor.hold();
        ASSERT_TRUE(processEventsUntil([&] { return isInhibited(); }));
    }
    EXPECT_TRUE(processEventsUntil([&] { return !isInhibited(); }));
    {
        SleepInhibitor inhibitor(QStringLiteral("a"), QStringLiteral("b"), access());
        inhibitor.hold();
    }
    EXPECT_FALSE(processEventsUntil([&] { return isInhibited(); }, 50ms));
}

TEST_F(SystemSleepTest, TakesUpItsWorkWhenTheBusComes)
{
    int wakes = 0;
    const WakeNotices notices([&] { ++wakes; }, access());
    SleepInhibitor inhibitor(QStringLiteral("a"), QStringLiteral("b"), access());
    inhibitor.hold();
    for (const char* what : {"a bus that comes later", "a bus that comes back"}) {
        SCOPED_TRACE(what);
        // Some attempts fail, and what the last bus told arrives.
        EXPECT_FALSE(processEventsUntil([] { return false; }, 120ms));
        wakes = 0;
        startAll();
        // The bus may be found before its login manager is there.
        ASSERT_TRUE(processEventsUntil([&] {
            inhibitor.hold();
            return isInhibited();
        }));
        ASSERT_TRUE(processEventsUntil([&] {
            prepareForSleep("false");
            return wakes > 0;
        }));
        killAll();
        inhibitor.release();
        inhibitor.hold();
    }
}

} // namespace
} // namespace platform
