#include "platform/DescriptorLimit.h"

#include <algorithm>

#include <sys/resource.h>

namespace platform {

namespace {

// Also the most that is asked for: with far more, libraries that walk all descriptors get slow.
constexpr rlim_t highestLimit = 65536;

} // namespace

unsigned descriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return static_cast<unsigned>(highestLimit);
    return static_cast<unsigned>(std::min(limit.rlim_cur, highestLimit));
}

void raiseDescriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const rlim_t wanted = std::min(limit.rlim_max, highestLimit);
    if (limit.rlim_cur >= wanted) return;
    limit.rlim_cur = wanted;
    // Permitted up to the hard limit; where it is not, the old limit serves.
    static_cast<void>(::setrlimit(RLIMIT_NOFILE, &limit));
}

} // namespace platform
