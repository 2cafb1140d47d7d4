#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace platform {

/// Runs tasks one at a time, in the order in which they were given, on a thread of its own: for
/// work that blocks. The destructor lets the running task finish, drops the waiting ones and joins
/// the thread; it must not run on that thread. A task must not throw: that ends the program, with
/// what was thrown on the standard error.
class ThreadQueue {
public:
    using Task = std::function<void()>;

    /// `label` names the queue's role and, as far as the system has room (15 characters), its
    /// thread. Throws std::system_error when there is none to be had.
    explicit ThreadQueue(const std::string& label);
    ~ThreadQueue();
    ThreadQueue(const ThreadQueue&) = delete;
    ThreadQueue& operator=(const ThreadQueue&) = delete;

    /// May be called from any thread; returns at once.
    void async(Task task);

private:
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    bool ended_ = false;
    std::thread thread_; ///< last: it uses the others
};

} // namespace platform
