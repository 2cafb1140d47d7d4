#include "support/ManualQueue.h"

#include <algorithm>
#include <utility>

namespace support {

class ManualQueue::Delayed final : public platform::DelayedTask {
public:
    explicit Delayed(Task task) : task_(std::move(task)) {}

    void cancel() override
    {
        const std::lock_guard lock(mutex_);
        task_ = nullptr;
    }

    [[nodiscard]] bool isPending() const
    {
        const std::lock_guard lock(mutex_);
        return task_ != nullptr;
    }

    void run()
    {
        Task task;
        {
            const std::lock_guard lock(mutex_);
            task = std::exchange(task_, nullptr);
        }
        if (task) task();
    }

private:
    mutable std::mutex mutex_;
    Task task_;
};

void ManualQueue::async(Task task)
{
    const std::lock_guard lock(mutex_);
    ready_.push_back(std::move(task));
    added_.notify_one();
}

std::shared_ptr<platform::DelayedTask> ManualQueue::after(platform::Duration delay, Task task)
{
    auto delayed = std::make_shared<Delayed>(std::move(task));
    const std::lock_guard lock(mutex_);
    delayed_.emplace(now_ + delay, delayed);
    return delayed;
}

void ManualQueue::runAll()
{
    while (runOne()) {}
}

bool ManualQueue::runOne()
{
    Task task;
    {
        const std::lock_guard lock(mutex_);
        if (ready_.empty()) return false;
        task = std::move(ready_.front());
        ready_.pop_front();
    }
    task();
    return true;
}

void ManualQueue::advance(platform::Duration duration)
{
    const platform::TimePoint end = now_ + duration;
    runAll();
    for (;;) {
        std::shared_ptr<Delayed> due;
        {
            const std::lock_guard lock(mutex_);
            if (delayed_.empty() || delayed_.begin()->first > end) break;
            now_ = delayed_.begin()->first;
            due = delayed_.begin()->second;
            delayed_.erase(delayed_.begin());
        }
        due->run();
        runAll();
    }
    const std::lock_guard lock(mutex_);
    now_ = end;
}

bool ManualQueue::waitFor(const std::function<bool()>& done)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (runOne()) continue;
        std::unique_lock lock(mutex_);
        // What `done` looks at may change without a task, so look again soon.
        added_.wait_for(lock, std::chrono::milliseconds(5), [this] { return !ready_.empty(); });
        if (std::chrono::steady_clock::now() > deadline) return false;
    }
    return true;
}

std::size_t ManualQueue::delayedCount() const
{
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(delayed_.begin(), delayed_.end(),
        [](const auto& entry) { return entry.second->isPending(); }));
}

} // namespace support
