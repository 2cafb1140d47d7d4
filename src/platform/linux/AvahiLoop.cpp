#include "platform/linux/AvahiLoop.h"

#include "platform/ThreadName.h"

#include <algorithm>
#include <limits>

#include <sys/eventfd.h>

namespace platform {

namespace {

// Far more than the last task takes unless it hangs.
constexpr auto longestWaitForEnd = std::chrono::milliseconds(500);
// Without descriptors or memory; trying again at once would not help.
constexpr auto pauseAfterFailure = std::chrono::milliseconds(100);

void clearEvent(AvahiWatch*, int descriptor, AvahiWatchEvent, void*)
{
    eventfd_t count = 0;
    ::eventfd_read(descriptor, &count);
}

} // namespace

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
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    signal();
}

void AvahiLoop::finish(Task last)
{
    {
        const std::lock_guard lock(mutex_);
        last_ = std::move(last);
        signal();
    }
    if (ended_.get_future().wait_for(longestWaitForEnd) == std::future_status::ready) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void AvahiLoop::signal()
{
    if (tasksWaiting_.isOpen()) ::eventfd_write(tasksWaiting_.get(), 1);
}

const AvahiPoll* AvahiLoop::poll() const
{
    return poll_ ? avahi_simple_poll_get(poll_.get()) : nullptr;
}

void AvahiLoop::wakeAfter(const void* who, Duration delay, Task task)
{
    wakes_[who] = Wake{clock_.now() + delay, std::move(task)};
}

void AvahiLoop::run()
{
    do {
        waitForEvents();
        runDueTasks();
    } while (runTasks());
}

void AvahiLoop::waitForEvents()
{
    // Tasks that were given before it was open have signalled nothing.
    if (!poll_ && open()) return;
    if (!poll_ || avahi_simple_poll_iterate(poll_.get(), millisecondsToWake()) < 0) {
        std::this_thread::sleep_for(pauseAfterFailure);
    }
}

/// False while there are no descriptors to be had.
bool AvahiLoop::open()
{
    FileDescriptor event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    std::unique_ptr<AvahiSimplePoll, FreePoll> poll(avahi_simple_poll_new());
    if (!event.isOpen() || !poll) return false;
    const AvahiPoll* const interface = avahi_simple_poll_get(poll.get());
    if (interface->watch_new(interface, event.get(), AVAHI_WATCH_IN, clearEvent, nullptr)
        == nullptr) {
        return false;
    }
    poll_ = std::move(poll);
    const std::lock_guard lock(mutex_);
    tasksWaiting_ = std::move(event);
    return true;
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
        attempt(last);
        return false;
    }
    for (const Task& task : tasks) {
        attempt(task);
    }
    return true;
}

void AvahiLoop::runDueTasks()
{
    const TimePoint now = clock_.now();
    for (auto wake = nextWake(); wake != wakes_.end() && wake->second.due <= now;
         wake = nextWake()) {
        const Task task = std::move(wake->second.task);
        wakes_.erase(wake);
        attempt(task);
    }
}

AvahiLoop::Wakes::iterator AvahiLoop::nextWake()
{
    return std::min_element(wakes_.begin(), wakes_.end(),
        [](const auto& left, const auto& right) { return left.second.due < right.second.due; });
}

int AvahiLoop::millisecondsToWake()
{
    constexpr int forever = -1;
    constexpr std::chrono::milliseconds longest(std::numeric_limits<int>::max());
    const auto next = nextWake();
    if (next == wakes_.end()) return forever;
    const auto remaining
        = std::chrono::ceil<std::chrono::milliseconds>(next->second.due - clock_.now());
    return static_cast<int>(
        std::clamp(remaining, std::chrono::milliseconds::zero(), longest).count());
}

} // namespace platform
