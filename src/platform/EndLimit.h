#pragma once

#include "platform/Clock.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace platform {

/// Ends the process, with status 1, when what it does before its end takes too long: a disk or a
/// bus that hangs cannot be interrupted. Made when the end begins, destroyed last of all.
class EndLimit {
public:
    /// `onGiveUp` runs on a thread of its own, right before the process ends; for a second at most.
    /// Throws std::system_error when there is no thread to be had.
    EndLimit(Duration limit, std::function<void()> onGiveUp);
    /// Everything has ended in time.
    ~EndLimit();
    EndLimit(const EndLimit&) = delete;
    EndLimit& operator=(const EndLimit&) = delete;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isInTime_ = false;
    std::thread thread_;
};

} // namespace platform
