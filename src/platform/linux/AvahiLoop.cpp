#include "platform/linux/AvahiLoop.h"

#include "platform/ThreadName.h"

#include <algorithm>
#include <limits>

#include <sys/eventfd.h>

namespace platform {

namespace {

// Far more than the last task takes unless it hangs.
constexpr auto longestWaitForEnd = std::chrono::milliseconds(500);
// poll(2) fails only when memory is short; trying again at once would not help.
constexpr auto pauseAfterFailure = std::chrono::milliseconds(100);

void clearEvent(AvahiWatch*, int descriptor, AvahiWatchEvent, void*)
{
    eventfd_t count = 0;
    ::eventfd_read(descriptor, &count);
}

} // namespace

AvahiLoop::AvahiLoop()
    : tasksWaiting_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), poll_(avahi_simple_poll_new())
{
    const bool complete = tasksWaiting_.isOpen() && poll_
        && poll()->watch_new(poll(), tasksWaiting_.get(), AVAHI_WATCH_IN, clearEvent, nullptr)
            != nullptr;
    if (!complete) throw std::system_error(std::make_error_code(std::errc::too_many_files_open));
}

std::shared_ptr<AvahiLoop> AvahiLoop::start(const std::string& label)
{
    std::shared_ptr<AvahiLoop> loop(new AvahiLoop);
    loop->thread_ = std::thread([loop, label] {
        setCurrentThreadName(label);
        loop->run();
        loop->ended_.set_value();
    });
    return loop;
}

void AvahiLoop::async(Task task)
{
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    ::eventfd_write(tasksWaiting_.get(), 1);
}

void AvahiLoop::finish(Task last)
{
    {
        const std::lock_guard lock(mutex_);
        last_ = std::move(last);
    }
    ::eventfd_write(tasksWaiting_.get(), 1);
    if (ended_.get_future().wait_for(longestWaitForEnd) == std::future_status::ready) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void AvahiLoop::wakeAfter(Duration delay, Task task)
{
    wake_ = Wake{clock_.now() + delay, std::move(task)};
}

void AvahiLoop::run()
{
    do {
        if (avahi_simple_poll_iterate(poll_.get(), millisecondsToWake()) < 0) {
            std::this_thread::sleep_for(pauseAfterFailure);
        }
        runDueTask();
    } while (runTasks());
}

/// False after the last task.
bool AvahiLoop::runTasks()
{
    std::vector<Task> tasks;
    Task last;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
        last.swap(last_);
    }
    if (last) {
        last();
        return false;
    }
    for (const Task& task : tasks) {
        task();
    }
    return true;
}

void AvahiLoop::runDueTask()
{
    if (!wake_ || wake_->due > clock_.now()) return;
    const Task task = std::move(wake_->task);
    wake_.reset();
    task();
}

int AvahiLoop::millisecondsToWake() const
{
    constexpr int forever = -1;
    constexpr std::chrono::milliseconds longest(std::numeric_limits<int>::max());
    if (!wake_) return forever;
    const auto remaining = std::chrono::ceil<std::chrono::milliseconds>(wake_->due - clock_.now());
    return static_cast<int>(
        std::clamp(remaining, std::chrono::milliseconds::zero(), longest).count());
}

} // namespace platform
