#include "platform/ThreadQueue.h"

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
