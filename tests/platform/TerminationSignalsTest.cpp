#include "platform/TerminationSignals.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <thread>

#include <unistd.h>

namespace platform {
namespace {

/// In a process of its own: what is asked of it, and how its event loop ends.
void run(int first, std::optional<int> second = {})
{
    std::signal(SIGHUP, SIG_IGN);
    quitOnTerminationSignals();
    // Whichever thread the system picks for the signal.
    std::thread([&] { ::raise(first); }).join();
    if (second) ::raise(*second);
    ::_exit(QCoreApplication::exec());
}

TEST(TerminationSignalsDeathTest, EndTheEventLoopAndTheSecondTimeTheProcess)
{
    EXPECT_EXIT(run(SIGINT), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(run(SIGTERM), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(run(SIGHUP, SIGTERM), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(run(SIGTERM, SIGHUP), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(run(SIGTERM, SIGINT), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(run(SIGINT, SIGINT), ::testing::KilledBySignal(SIGINT), "");
}

} // namespace
} // namespace platform
