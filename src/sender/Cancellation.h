#pragma once

#include "platform/Clock.h"
#include "platform/Tcp.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace ferrylane {

/// Stops a running job from another thread: the job's waits end at once, and its next look at this
/// throws. Safe from any thread.
class Cancellation {
public:
    /// A new job begins.
    void clear();
    /// Does not wait for the job. Closes the job's connection.
    void cancel();

    [[nodiscard]] bool isCancelled() const;
    /// Throws SendError (stopped) once cancelled; so does sleepFor(), early.
    void check() const;
    void sleepFor(platform::Duration duration) const;

    /// While it lives, cancel() closes `connection`. Throws SendError (stopped) once cancelled.
    class Watch {
    public:
        Watch(Cancellation& cancellation, std::shared_ptr<platform::TcpConnection> connection);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        Cancellation& cancellation_;
    };

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool cancelled_ = false;
    std::shared_ptr<platform::TcpConnection> activeConnection_;
};

} // namespace ferrylane
