#pragma once

#include "platform/SerialQueue.h"
#include "support/ManualClock.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace support {

/// A main queue that a test runs by hand. Tasks may be given from any thread; they run in the
/// thread that calls runAll(), advance() or waitFor().
class ManualQueue final : public platform::SerialQueue {
public:
    void async(Task task) override;
    /// Waits in the queue's own time, which only advance() moves.
    std::shared_ptr<platform::DelayedTask> after(platform::Duration delay, Task task) override;

    /// Runs what is waiting, and what that adds, until nothing is left.
    void runAll();
    /// Lets `duration` pass, running the delayed tasks that become due, in the order of their
    /// times.
    void advance(platform::Duration duration);
    /// Runs tasks as they come from other threads until `done` holds; false after ten seconds.
    [[nodiscard]] bool waitFor(const std::function<bool()>& done);

    [[nodiscard]] std::size_t delayedCount() const;

private:
    class Delayed;
    bool runOne();

    mutable std::mutex mutex_;
    std::condition_variable added_;
    std::deque<Task> ready_;
    std::multimap<platform::TimePoint, std::shared_ptr<Delayed>> delayed_;
    platform::TimePoint now_{};
};

} // namespace support
