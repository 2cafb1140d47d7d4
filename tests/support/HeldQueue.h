#pragma once

#include "platform/ThreadQueue.h"

#include <future>

namespace support {

/// A thread for tasks that wait until a test lets them run.
class HeldQueue {
public:
    HeldQueue() { hold(); }
    ~HeldQueue() { release_.set_value(); }
    HeldQueue(const HeldQueue&) = delete;
    HeldQueue& operator=(const HeldQueue&) = delete;

    [[nodiscard]] platform::ThreadQueue& queue() { return queue_; }

    /// Runs what waits, and returns when that is done.
    void runAll()
    {
        release_.set_value();
        std::promise<void> done;
        queue_.async([&done] { done.set_value(); });
        done.get_future().wait();
        hold();
    }

private:
    void hold()
    {
        release_ = {};
        queue_.async([released = release_.get_future().share()] { released.wait(); });
    }

    std::promise<void> release_;
    platform::ThreadQueue queue_{"test.held"};
};

} // namespace support
