#include "platform/ThreadQueue.h"

#include "platform/ThreadName.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>

namespace platform {

/// What is to be run, and when.
class ThreadQueue::Schedule {
public:
    void add(Task task)
    {
        const std::lock_guard lock(mutex_);
        if (ended_) return;
        ready_.push_back(std::move(task));
        changed_.notify_one();
    }

    void add(TimePoint due, const std::shared_ptr<Task>& task)
    {
        const std::lock_guard lock(mutex_);
        if (ended_) return;
        delayed_.emplace(due, task);
        changed_.notify_one();
    }

    void cancel(const std::shared_ptr<Task>& task)
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(delayed_, [&](const auto& entry) { return entry.second == task; });
    }

    /// Waits for the next task; none once the queue has ended.
    std::optional<Task> next()
    {
        std::unique_lock lock(mutex_);
        while (!ended_) {
            if (!delayed_.empty() && delayed_.begin()->first <= clock_.now()) {
                ready_.push_back(std::move(*delayed_.begin()->second));
                delayed_.erase(delayed_.begin());
            } else if (!ready_.empty()) {
                Task task = std::move(ready_.front());
                ready_.pop_front();
                return task;
            } else if (delayed_.empty()) {
                changed_.wait(lock);
            } else {
                // A copy: the entry may go while this waits.
                const TimePoint due = delayed_.begin()->first;
                changed_.wait_until(lock, due);
            }
        }
        return std::nullopt;
    }

    void end()
    {
        std::deque<Task> dropped;
        std::multimap<TimePoint, std::shared_ptr<Task>> droppedDelayed;
        const std::lock_guard lock(mutex_);
        ended_ = true;
        // What the tasks hold may use the queue when it goes, so it goes after the lock.
        dropped.swap(ready_);
        droppedDelayed.swap(delayed_);
        changed_.notify_one();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> ready_;
    std::multimap<TimePoint, std::shared_ptr<Task>> delayed_;
    bool ended_ = false;
    SteadyClock clock_;
};

namespace {

template <typename Schedule> class DelayedOnThread final : public DelayedTask {
public:
    DelayedOnThread(std::weak_ptr<Schedule> schedule, std::shared_ptr<SerialQueue::Task> task)
        : schedule_(std::move(schedule)), task_(std::move(task))
    {
    }

    void cancel() override
    {
        if (const auto schedule = schedule_.lock()) schedule->cancel(task_);
    }

private:
    std::weak_ptr<Schedule> schedule_;
    std::shared_ptr<SerialQueue::Task> task_;
};

} // namespace

ThreadQueue::ThreadQueue(const std::string& label)
    : schedule_(std::make_shared<Schedule>()), thread_([label, schedule = schedule_] {
        setCurrentThreadName(label);
        while (auto task = schedule->next()) {
            (*task)();
        }
    })
{
}

ThreadQueue::~ThreadQueue()
{
    schedule_->end();
    thread_.join();
}

void ThreadQueue::async(Task task)
{
    schedule_->add(std::move(task));
}

std::shared_ptr<DelayedTask> ThreadQueue::after(Duration delay, Task task)
{
    auto shared = std::make_shared<Task>(std::move(task));
    schedule_->add(SteadyClock().now() + delay, shared);
    return std::make_shared<DelayedOnThread<Schedule>>(schedule_, std::move(shared));
}

} // namespace platform
