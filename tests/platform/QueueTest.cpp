#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/ThreadQueue.h"
#include "support/ManualQueue.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <vector>

using namespace platform;
using namespace std::chrono_literals;

TEST(ThreadQueue, runsTasksInOrderOnOneThread)
{
    std::vector<int> ran;
    std::vector<std::thread::id> threads;
    {
        ThreadQueue queue("test.order");
        std::promise<void> done;
        for (int i = 0; i < 100; ++i) {
            queue.async([&, i] {
                ran.push_back(i);
                threads.push_back(std::this_thread::get_id());
            });
        }
        queue.async([&] { done.set_value(); });
        done.get_future().wait();
    }
    ASSERT_EQ(ran.size(), 100U);
    EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
    EXPECT_EQ(std::count(threads.begin(), threads.end(), threads.front()), 100);
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(ThreadQueue, destructorWaitsForTheRunningTaskAndDropsTheRest)
{
    std::atomic<int> finished = 0;
    std::promise<void> started;
    {
        ThreadQueue queue("test.end");
        queue.async([&] {
            started.set_value();
            std::this_thread::sleep_for(50ms);
            ++finished;
        });
        queue.async([&] { finished += 100; });
        started.get_future().wait();
    }
    EXPECT_EQ(finished, 1);
}

TEST(ThreadQueue, delayedTasksComeInTheOrderOfTheirTimesUnlessCancelled)
{
    ThreadQueue queue("test.delay");
    std::promise<std::vector<int>> result;
    std::vector<int> ran;
    const auto begin = SteadyClock().now();
    queue.after(60ms, [&] {
        ran.push_back(60);
        result.set_value(ran);
    });
    queue.after(20ms, [&] { ran.push_back(20); });
    queue.after(10ms, [&] { ran.push_back(10); })->cancel();
    queue.async([&] { ran.push_back(0); });

    EXPECT_EQ(result.get_future().get(), (std::vector{0, 20, 60}));
    EXPECT_GE(SteadyClock().now() - begin, 60ms);
}

TEST(ThreadQueue, endsWhileItWaitsForADelayedTask)
{
    bool ran = false;
    {
        ThreadQueue queue("test.wait");
        queue.after(1h, [&] { ran = true; });
        std::this_thread::sleep_for(20ms); // into the wait
    }
    EXPECT_FALSE(ran);
}

TEST(ThreadQueue, aDelayedTaskMayBeCancelledAfterItsQueueHasGone)
{
    std::shared_ptr<DelayedTask> task;
    bool ran = false;
    {
        ThreadQueue queue("test.gone");
        task = queue.after(1h, [&] { ran = true; });
    }
    task->cancel();
    EXPECT_FALSE(ran);
}

TEST(MainQueue, runsOnTheEventLoopWhateverThreadAsks)
{
    MainQueue queue;
    QEventLoop loop;
    const auto mainThread = std::this_thread::get_id();
    std::vector<int> ran;
    std::thread other([&] {
        queue.async([&] {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            ran.push_back(1);
        });
        queue.after(20ms, [&] {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            ran.push_back(2);
            loop.quit();
        });
        queue.after(1ms, [&] { ran.push_back(3); })->cancel();
    });
    other.join();
    EXPECT_TRUE(ran.empty());
    loop.exec();
    EXPECT_EQ(ran, (std::vector{1, 2}));
}

TEST(NotificationCenter, deliversInOrderOnTheMainQueueUntilTheObservationEnds)
{
    support::ManualQueue mainQueue;
    NotificationCenter center(mainQueue);
    std::vector<QString> got;
    const auto take = [&](const NotificationCenter::Payload& payload) {
        got.push_back(std::holds_alternative<double>(payload)
                ? QString::number(std::get<double>(payload))
                : std::get<QString>(payload));
    };
    {
        const auto observation = center.observe(QStringLiteral("Speed"), take);
        center.post(QStringLiteral("Speed"), 1.5);
        center.post(QStringLiteral("Other"), QStringLiteral("not for us"));
        std::thread([&] { center.post(QStringLiteral("Speed"), QStringLiteral("fast")); }).join();
        EXPECT_TRUE(got.empty());
        mainQueue.runAll();
        center.post(QStringLiteral("Speed"), 2.0);
    }
    mainQueue.runAll();
    EXPECT_EQ(got, (std::vector<QString>{QStringLiteral("1.5"), QStringLiteral("fast")}));
}

TEST(NotificationCenter, aHandlerMayEndAnotherObservation)
{
    support::ManualQueue mainQueue;
    NotificationCenter center(mainQueue);
    int second = 0;
    NotificationCenter::Observation other;
    const auto first = center.observe(QStringLiteral("Stopped"), [&](const auto&) { other = {}; });
    other = center.observe(QStringLiteral("Stopped"), [&](const auto&) { ++second; });
    center.post(QStringLiteral("Stopped"));
    mainQueue.runAll();
    EXPECT_EQ(second, 0);
}
