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
    SystemSleep sleep({}, {}, access());
    int wakes = 0;
    QObject::connect(&sleep, &SystemSleep::didWake, [&] { ++wakes; });
    // Known to listen once it can hold.
    sleep.inhibit();
    ASSERT_TRUE(processEventsUntil([&] { return loginManager.isInhibited(); }));
    for (int sleeps = 1; sleeps <= 2; ++sleeps) {
        loginManager.prepareForSleep(true);
        EXPECT_FALSE(processEventsUntil([&] { return wakes == sleeps; }, 50ms));
        loginManager.prepareForSleep(false);
        EXPECT_TRUE(processEventsUntil([&] { return wakes == sleeps; }));
    }
}

TEST_F(SystemSleepTest, KeepsAwakeWhileHeldAndLeavesNothingBehind)
{
    loginManager.start();
    {
        SystemSleep sleep(
            QStringLiteral("Some program"), QStringLiteral("Doing something"), access());
        EXPECT_FALSE(loginManager.isInhibited());
        for (int i = 0; i < 2; ++i) {
            sleep.inhibit();
            sleep.inhibit();
            ASSERT_TRUE(processEventsUntil([&] { return loginManager.isInhibited(); }));
            sleep.inhibit();
            const QByteArray all = loginManager.inhibitors();
            EXPECT_EQ(all.count("struct"), 1) << all.constData();
            for (const char* text : {"sleep", "Some program", "Doing something", "block"}) {
                EXPECT_TRUE(all.contains(QByteArray("string \"") + text + '"')) << text;
            }
            sleep.release();
            sleep.release();
            EXPECT_TRUE(processEventsUntil([&] { return !loginManager.isInhibited(); }));
        }
        for (int i = 0; i < 10; ++i) {
            sleep.inhibit();
            sleep.release();
        }
        EXPECT_TRUE(processEventsUntil([&] { return !loginManager.isInhibited(); }));
        EXPECT_FALSE(processEventsUntil([&] { return loginManager.isInhibited(); }, 50ms));
        sleep.inhibit();
        ASSERT_TRUE(processEventsUntil([&] { return loginManager.isInhibited(); }));
        sleep.release();
        sleep.inhibit(); // on its way when this ends
    }
    EXPECT_TRUE(processEventsUntil([&] { return !loginManager.isInhibited(); }));
    EXPECT_FALSE(processEventsUntil([&] { return loginManager.isInhibited(); }, 50ms));
}

TEST_F(SystemSleepTest, TakesUpItsWorkWhenTheBusComes)
{
    SystemSleep sleep(QStringLiteral("a"), QStringLiteral("b"), access());
    int wakes = 0;
    QObject::connect(&sleep, &SystemSleep::didWake, [&] { ++wakes; });
    sleep.inhibit();
    for (const char* what : {"a bus that comes later", "a bus that comes back"}) {
        SCOPED_TRACE(what);
        // Some attempts fail, and what the last bus told arrives.
        EXPECT_FALSE(processEventsUntil([] { return false; }, 120ms));
        wakes = 0;
        loginManager.start();
        ASSERT_TRUE(processEventsUntil([&] { return loginManager.isInhibited(); }));
        loginManager.prepareForSleep(false);
        ASSERT_TRUE(processEventsUntil([&] { return wakes == 1; }));
        loginManager.kill();
        sleep.release();
        sleep.inhibit();
    }
}

} // namespace
} // namespace platform
