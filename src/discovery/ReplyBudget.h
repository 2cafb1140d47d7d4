#pragma once

#include "discovery/Allowance.h"
#include "platform/Clock.h"

#include <cstdint>
#include <map>

namespace ferrylane {

/// Decides which discovery requests are answered when there are more than people's phones send.
///
/// No source gets more than a burst and a few a second. An answer to an address that no host has
/// takes a place in the system's table of neighbours for three seconds. So that the table never
/// overflows, a bounded number of addresses is answered anew in a second, those known from before
/// with a reserve of their own: made-up addresses, each of which asks once, take nothing from a
/// phone that has been answered. For one thread.
class ReplyBudget {
public:
    static constexpr double burstOfOne = 20;
    static constexpr double perSecondOfOne = 3;
    static constexpr double answersPerSecond = 1000;
    static constexpr platform::Duration neighbourTime = std::chrono::seconds(3);
    /// The table has room for 1,024, some of which the rest of the system needs.
    static constexpr double neighboursPerSecond = 320;
    static constexpr double reserveForKnown = 64;
    /// The ones answered last. At most rates a source stays known for 12 seconds, longer than a
    /// phone pauses between two questions.
    static constexpr std::size_t maximumSources = 4096;

    /// Whether a request from this address is answered, which then counts.
    [[nodiscard]] bool spend(std::uint32_t address, platform::TimePoint now);

private:
    struct Source {
        Allowance allowance{perSecondOfOne, burstOfOne};
        platform::TimePoint answered;
    };

    [[nodiscard]] bool spendOn(Source& source, platform::TimePoint now);
    void forgetSilentLongest();

    std::map<std::uint32_t, Source> sources_;
    Allowance answers_{answersPerSecond, answersPerSecond};
    Allowance neighbours_{neighboursPerSecond, neighboursPerSecond};
};

} // namespace ferrylane
