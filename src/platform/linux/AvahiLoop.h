#pragma once

#include "platform/Clock.h"
#include "platform/linux/FileDescriptor.h"

#include <QtGlobal>

#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <avahi-common/simple-watch.h>

namespace platform {

/// A thread that runs Avahi's event loop and the tasks given to it, one at a time.
///
/// Avahi's own loop on a thread is not used: whoever wants something of that waits for its lock,
/// which is held for as long as a call to a hanging bus or daemon takes (25 s). Here nobody waits:
/// tasks are left in a list, and a thread that hangs is left to itself in the end.
///
/// The thread holds the loop until it ends, so what runs on it may keep a plain reference.
class AvahiLoop : public std::enable_shared_from_this<AvahiLoop> {
public:
    using Task = std::function<void()>;

    /// `label` names the thread. Throws std::system_error when there is no thread to be had.
    /// finish() must be called in the end.
    [[nodiscard]] static std::shared_ptr<AvahiLoop> start(const std::string& label);

    AvahiLoop(const AvahiLoop&) = delete;
    AvahiLoop& operator=(const AvahiLoop&) = delete;
    ~AvahiLoop() = default;

    /// Runs a task, or the handling of an event of Avahi's, which is C and knows no exceptions.
    /// What is thrown, such as for a lack of memory, ends up on the standard error.
    template <typename Function> static void attempt(const Function& function)
    {
        try {
            function();
        } catch (const std::exception& error) {
            qCritical("DNS-SD: %s", error.what());
        }
    }

    /// Runs `task` on the loop's thread. Any thread.
    void async(Task task);
    /// Runs `last` on the loop's thread in place of what still waits, and ends the loop. Waits for
    /// the end half a second at most: a thread that hangs ends when what it waits for does. Once,
    /// and not on the loop's own thread.
    void finish(Task last);

    // For what runs on the loop's thread.

    /// Null while there are no descriptors to be had.
    [[nodiscard]] const AvahiPoll* poll() const;
    /// Runs `task` once after `delay`, in place of one that `who` has set before. Avahi's own
    /// timers go by the time of day, which may be set back.
    void wakeAfter(const void* who, Duration delay, Task task);
    void cancelWake(const void* who) { wakes_.erase(who); }

private:
    struct FreePoll {
        void operator()(AvahiSimplePoll* poll) const { avahi_simple_poll_free(poll); }
    };
    struct Wake {
        TimePoint due;
        Task task;
    };
    using Wakes = std::map<const void*, Wake>;

    AvahiLoop() = default;
    void run();
    void waitForEvents();
    [[nodiscard]] bool open();
    void signal();
    [[nodiscard]] bool runTasks();
    void runDueTasks();
    [[nodiscard]] Wakes::iterator nextWake();
    [[nodiscard]] int millisecondsToWake();

    Wakes wakes_;
    SteadyClock clock_;

    std::mutex mutex_;            ///< for the tasks and their event
    FileDescriptor tasksWaiting_; ///< an eventfd that ends the wait for events
    std::vector<Task> tasks_;
    Task last_;

    std::unique_ptr<AvahiSimplePoll, FreePoll> poll_; ///< watches the event

    std::promise<void> ended_;
    std::thread thread_;
};

} // namespace platform
