#include "platform/SystemSleep.h"

#include "support/EventLoop.h"
#include "support/LoginManager.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using namespace std::chrono_literals;
using support::processEventsUntil;

class SystemSleepTest : public ::testing::Test {
protected:
    [[nodiscard]] SystemBusAccess access() const { return {loginManager.busAddress(), 50ms}; }

    support::LoginManager loginManager;
};

TEST_F(SystemSleepTest, TellsOfWaking)
{
    loginManager.start();
    int wakes = 0;
    auto notices = std::make_unique<WakeNotices>([&] { ++wakes; }, access());
    for (int sleeps = 1; sleeps <= 2; ++sleeps) {
        loginManager.prepareForSleep(true);
        EXPECT_FALSE(processEventsUntil([&] { return wakes == sleeps; }, 50ms));
        loginManager.prepareForSleep(false);
        EXPECT_TRUE(processEventsUntil([&] { return wakes == sleeps; }));
    }

    loginManager.prepareForSleep(false);
    notices.reset();
    EXPECT_FALSE(processEventsUntil([&] { return wakes != 2; }, 50ms));
}

TEST_F(SystemSleepTest, KeepsAwakeWhileHeld)
{
    loginManager.start();
    SleepInhibitor inhibitor(
        QStringLiteral("Some program"), QStringLiteral("Doing something"), access());
    EXPECT_FALSE(loginManager.isInhibited());
    for (int i = 0; i < 2; ++i) {
        inhibitor.hold();
        inhibitor.hold();
        ASSERT_TRUE(processEventsUntil([&] { return loginManager.isInhibited(); }));
        inhibitor.hold();
        const QByteArray all = loginManager.inhibitors();
        EXPECT_EQ(all.count("struct"), 1) << all.constData();
        for (const char* text : {"sleep", "Some program", "Doing something", "block"}) {
            EXPECT_TRUE(all.contains(QByteArray("string \"") + text + '"')) << text;
        }

        inhibitor.release();
        inhibitor.release();
        EXPECT_TRUE(processEventsUntil([&] { return !loginManager.isInhibited(); }));
    }
}

TEST_F(SystemSleepTest, LeavesNothingBehind)
{
    loginManager.start();
    {
        SleepInhibitor inhibitor(QStringLiteral("a"), QStringLiteral("b"), access());
        for (int i = 0; i < 10; ++i) {
            inhibitor.hold();
            inhibitor.release();
        }
        EXPECT_TRUE(processEventsUntil([&] { return !loginManager.isInhibited(); }));
        EXPECT_FALSE(processEventsUntil([&] { return loginManager.isInhibited(); }, 50ms));
        inhibitor.hold();
        ASSERT_TRUE(processEventsUntil([&] { return loginManager.isInhibited(); }));
    }
    EXPECT_TRUE(processEventsUntil([&] { return !loginManager.isInhibited(); }));
    {
        SleepInhibitor inhibitor(QStringLiteral("a"), QStringLiteral("b"), access());
        inhibitor.hold();
    }
    EXPECT_FALSE(processEventsUntil([&] { return loginManager.isInhibited(); }, 50ms));
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
        loginManager.start();
        // The bus may be found before its login manager is there.
        ASSERT_TRUE(processEventsUntil([&] {
            inhibitor.hold();
            return loginManager.isInhibited();
        }));
        ASSERT_TRUE(processEventsUntil([&] {
            loginManager.prepareForSleep(false);
            return wakes > 0;
        }));
        loginManager.kill();
        inhibitor.release();
        inhibitor.hold();
    }
}

} // namespace
} // namespace platform
