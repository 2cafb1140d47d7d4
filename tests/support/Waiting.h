#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace support {

/// How long a test waits for what must happen. Longer than anything takes, sanitizers on a busy
/// machine included: it is waited out only when the test fails.
inline constexpr auto patience = std::chrono::seconds(20);

/// Looks again every few milliseconds until `done` holds; false when it does not in time.
[[nodiscard]] inline bool waitUntil(
    const std::function<bool()>& done, std::chrono::milliseconds limit = patience)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    return true;
}

} // namespace support
