#pragma once

#include "platform/SerialQueue.h"

#include <string>
#include <thread>

namespace platform {

/// A serial queue with a thread of its own, for work that blocks. The destructor lets the running
/// task finish, drops the waiting ones and joins the thread; it must not run on that thread. A task
/// must not throw: that ends the program, with what was thrown on the standard error.
class ThreadQueue final : public SerialQueue {
public:
    /// `label` names the queue's role and, as far as the system has room (15 characters), its
    /// thread.
    explicit ThreadQueue(const std::string& label);
    ~ThreadQueue() override;

    void async(Task task) override;
    std::shared_ptr<DelayedTask> after(Duration delay, Task task) override;

private:
    class Schedule;

    // Shared, because a delayed task may be cancelled after the queue has gone.
    std::shared_ptr<Schedule> schedule_;
    std::thread thread_;
};

} // namespace platform
