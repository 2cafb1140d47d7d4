#include "discovery/ReplyBudget.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace std::chrono_literals;

TEST(ReplyBudget, servesThePhoneInAFloodOfMadeUpSources)
{
    struct Row {
        const char* flood;
        unsigned perSecond;
        std::uint32_t addresses; ///< how many it makes up
        bool knowsThePhone;
    };
    for (const Row& row : {
             Row{"what the network can bear", 300, 1 << 24, false},
             Row{"each but once", 20000, 1 << 24, true},
             Row{"those of a small network", 20000, 250, true},
             Row{"one host", 20000, 1, true},
         }) {
        SCOPED_TRACE(row.flood);
        constexpr std::uint32_t phone = 1;
        ReplyBudget budget;
        platform::TimePoint now{1h};
        EXPECT_TRUE(!row.knowsThePhone || budget.spend(phone, now));
        unsigned spent = 0;
        for (std::uint32_t i = 0; i < 10 * row.perSecond; ++i) {
            now += 1'000'000'000ns / row.perSecond;
            spent += budget.spend(0x0A000000U + i % row.addresses, now) ? 1U : 0U;
            if (i % (3 * row.perSecond) == 2 * row.perSecond) {
                EXPECT_TRUE(budget.spend(phone, now)) << i;
            }
        }
        EXPECT_LE(spent, 11 * ReplyBudget::answersPerSecond);
        const double most = ReplyBudget::burstOfOne + 10 * ReplyBudget::perSecondOfOne;
        EXPECT_LE(spent, row.addresses * most);
    }
}
