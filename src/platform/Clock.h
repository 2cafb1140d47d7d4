#pragma once

#include "platform/Interface.h"

#include <chrono>

namespace platform {

using Duration = std::chrono::nanoseconds;
using TimePoint = std::chrono::time_point<std::chrono::steady_clock, Duration>;

/// Tells monotonic time. Passed in, so that a test can advance it by hand.
class Clock : public Interface {
public:
    [[nodiscard]] virtual TimePoint now() const = 0;
};

class SteadyClock final : public Clock {
public:
    [[nodiscard]] TimePoint now() const override { return std::chrono::steady_clock::now(); }
};

/// `duration` in seconds with fraction.
[[nodiscard]] inline double seconds(Duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

} // namespace platform
