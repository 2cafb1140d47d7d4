#include "core/TransferSpeed.h"

#include <algorithm>

namespace ferrylane {

double megabytesPerSecond(quint64 bytes, platform::Duration elapsed)
{
    constexpr double bytesPerMegabyte = 1'000'000;
    constexpr double shortestSeconds = 0.001;
    return static_cast<double>(bytes) / bytesPerMegabyte
        / std::max(platform::seconds(elapsed), shortestSeconds);
}

} // namespace ferrylane
