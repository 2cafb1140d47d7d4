#include "discovery/Allowance.h"

#include <algorithm>
#include <utility>

namespace ferrylane {

bool Allowance::take(platform::TimePoint now, double reserve)
{
    const std::chrono::duration<double> passed = now - std::exchange(filled_, now);
    left_ = std::min(size_, left_ + passed.count() * perSecond_);
    if (left_ < 1 + reserve) return false;
    left_ -= 1;
    return true;
}

} // namespace ferrylane
