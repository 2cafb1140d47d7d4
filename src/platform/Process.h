#pragma once

#include "platform/Clock.h"

#include <QString>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace platform {

/// How many descriptors (files, sockets) this process may have open at once: the soft limit, and
/// never more than 65536, which is enough for everything here.
[[nodiscard]] unsigned descriptorLimit();

/// Raises that limit as far as the system lets this process. Programs that are started from here
/// later have it, too.
void raiseDescriptorLimit();

/// Starts this program anew 0.6 seconds from now, in a session of its own and with the same
/// environment; this process is to end meanwhile. Returns why it could not be done, or nothing.
[[nodiscard]] std::optional<QString> relaunchSoon();

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
