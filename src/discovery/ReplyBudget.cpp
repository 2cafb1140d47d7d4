#include "discovery/ReplyBudget.h"

#include <algorithm>

namespace ferrylane {

bool ReplyBudget::spend(std::uint32_t address, platform::TimePoint now)
{
    const auto known = sources_.find(address);
    if (known != sources_.end()) return spendOn(known->second, now);

    if (!neighbours_.take(now, reserveForKnown) || !answers_.take(now)) return false;
    if (sources_.size() == maximumSources) forgetSilentLongest();
    Source& source = sources_[address];
    source.answered = now;
    return source.allowance.take(now);
}

bool ReplyBudget::spendOn(Source& source, platform::TimePoint now)
{
    if (!source.allowance.take(now)) return false;
    const bool isNeighbour = now - source.answered < neighbourTime;
    if (!isNeighbour && !neighbours_.take(now)) return false;
    if (!answers_.take(now)) return false;
    source.answered = now;
    return true;
}

void ReplyBudget::forgetSilentLongest()
{
    sources_.erase(
        std::min_element(sources_.begin(), sources_.end(), [](const auto& left, const auto& right) {
            return left.second.answered < right.second.answered;
        }));
}

} // namespace ferrylane
