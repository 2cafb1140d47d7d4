#include "platform/TerminationSignals.h"
#include "support/EventLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <unistd.h>

namespace platform {
namespace {

using namespace std::chrono_literals;

using support::processEventsUntil;

bool isHandled(int signal)
{
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
}

TEST(TerminationSignalsTest, CallsTheHandlerOnTheEventLoop)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        int calls = 0;
        std::thread::id caller;
        const TerminationSignals watcher([&] {
            ++calls;
            caller = std::this_thread::get_id();
        });
        // Whichever thread the system picks for the signal.
        std::thread([signal] { ::raise(signal); }).join();
        EXPECT_EQ(calls, 0);
        EXPECT_TRUE(processEventsUntil([&] { return calls > 0; }));
        EXPECT_EQ(calls, 1) << signal;
        EXPECT_EQ(caller, std::this_thread::get_id());
    }
}

TEST(TerminationSignalsTest, LeavesIgnoredSignalsIgnored)
{
    std::signal(SIGHUP, SIG_IGN);
    {
        const TerminationSignals watcher([] {});
        EXPECT_FALSE(isHandled(SIGHUP));
        EXPECT_TRUE(isHandled(SIGTERM));
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

void raiseTwice(int first, int second)
{
    const TerminationSignals watcher([] {});
    ::raise(first);
    ::raise(second);
    // Reached only when the second one was survived.
    ::_exit(0);
}

TEST(TerminationSignalsDeathTest, TheSameSignalASecondTimeEndsTheProcess)
{
    EXPECT_EXIT(raiseTwice(SIGINT, SIGINT), ::testing::KilledBySignal(SIGINT), "");
    EXPECT_EXIT(raiseTwice(SIGTERM, SIGHUP), ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace platform
