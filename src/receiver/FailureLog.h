#pragma once

#include "platform/SerialQueue.h"

#include <QString>

#include <memory>
#include <mutex>

namespace ferrylane {

/// Logs uploads that failed before anything of them was authentic, which anybody can make: ten a
/// second in lines of their own, the others of that second in one line with their number. From any
/// thread.
class FailureLog : public std::enable_shared_from_this<FailureLog> {
public:
    static constexpr int linesASecond = 10;

    /// `timer` must outlive this.
    explicit FailureLog(platform::SerialQueue& timer) : timer_(timer) {}

    void uploadFailed(const QString& reason);

private:
    void secondIsOver();

    platform::SerialQueue& timer_;
    std::mutex mutex_;
    int count_ = 0; ///< in the second that has begun with the first
};

} // namespace ferrylane
