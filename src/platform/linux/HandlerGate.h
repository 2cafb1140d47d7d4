#pragma once

#include <mutex>

namespace platform {

/// Lets handlers run until it is closed. Any thread.
class HandlerGate {
public:
    /// Runs `handler` unless the gate is closed.
    template <typename Handler> void pass(const Handler& handler)
    {
        const std::lock_guard lock(mutex_);
        if (isOpen_) handler();
    }

    /// Waits for a handler that is running: when this returns, none runs or will run. Not to be
    /// called from a handler.
    void close()
    {
        const std::lock_guard lock(mutex_);
        isOpen_ = false;
    }

private:
    std::mutex mutex_;
    bool isOpen_ = true;
};

} // namespace platform
