#include "platform/ThreadQueue.h"

#include "platform/ThreadName.h"

#include <utility>

namespace platform {

ThreadQueue::ThreadQueue(const std::string& label)
    : thread_([this, label] {
        setCurrentThreadName(label);
        run();
    })
{
}

ThreadQueue::~ThreadQueue()
{
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        changed_.notify_one();
    }
    // What the dropped tasks hold goes with the members, when the thread has ended.
    thread_.join();
}

void ThreadQueue::async(Task task)
{
    const std::lock_guard lock(mutex_);
    if (ended_) return;
    tasks_.push_back(std::move(task));
    changed_.notify_one();
}

void ThreadQueue::run()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ended_ || !tasks_.empty(); });
        if (ended_) return;
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        task = nullptr; // what it holds may use the queue when it goes
        lock.lock();
    }
}

} // namespace platform
