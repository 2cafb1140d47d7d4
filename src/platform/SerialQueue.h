#pragma once

#include "platform/Clock.h"
#include "platform/Interface.h"

#include <functional>
#include <memory>

namespace platform {

/// A task that waits for its time. Dropping it does not cancel it.
class DelayedTask : public Interface {
public:
    /// Called on the queue that the task was given to, the task does not run afterwards. Called
    /// from elsewhere, a task that has just begun may still finish. Does nothing the second time.
    virtual void cancel() = 0;
};

/// Runs tasks one at a time, in the order in which they were given.
class SerialQueue : public Interface {
public:
    using Task = std::function<void()>;

    /// May be called from any thread; returns at once.
    virtual void async(Task task) = 0;
    /// Runs `task` on this queue once `delay` has passed. May be called from any thread.
    virtual std::shared_ptr<DelayedTask> after(Duration delay, Task task) = 0;
};

} // namespace platform
