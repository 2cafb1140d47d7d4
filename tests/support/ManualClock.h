#pragma once

#include "platform/Clock.h"

#include <mutex>

namespace support {

/// A clock that stands still until it is advanced.
class ManualClock final : public platform::Clock {
public:
    [[nodiscard]] platform::TimePoint now() const override
    {
        const std::lock_guard lock(mutex_);
        return now_;
    }

    void advance(platform::Duration duration)
    {
        const std::lock_guard lock(mutex_);
        now_ += duration;
    }

private:
    mutable std::mutex mutex_;
    platform::TimePoint now_{std::chrono::hours(1)};
};

} // namespace support
