#include "discovery/UdpScanner.h"

#include "Phones.h"
#include "support/QtPrinting.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;
using namespace std::chrono_literals;

namespace {

using Outcome = Scan::Outcome;

constexpr auto silence = 300ms;

class UdpScannerTest : public testing::Test {
protected:
    Scan scan(const ScanRules& rules = {Phones::network, silence, 10s})
    {
        const auto start = std::chrono::steady_clock::now();
        Scan scan = scanUDP(stop_.get_token(), rules);
        duration_ = std::chrono::steady_clock::now() - start;
        return scan;
    }

    std::stop_source stop_;
    platform::Duration duration_{};
};

} // namespace

TEST_F(UdpScannerTest, collectsTheRepliesUntilNoneComes)
{
    Phones phones;
    phones.setAnswers({{discoveryReply(u"a"_s, 1), 7}, {"no reply"},
        {discoveryRequest.toByteArray()}, {discoveryReply(u"b"_s, 2)}});
    const Scan found = scan();
    EXPECT_EQ(found.outcome, Outcome::complete);
    EXPECT_GE(duration_, silence);
    EXPECT_EQ(phones.requests(), 1);
    ASSERT_EQ(found.replies.size(), 2U);
    EXPECT_EQ(found.replies[0].device, (DiscoveryReply{u"a"_s, 1}));
    EXPECT_EQ(found.replies[0].source.address, 0x7F000007U);
    EXPECT_EQ(found.replies[1].device, (DiscoveryReply{u"b"_s, 2}));
}

TEST_F(UdpScannerTest, endsWithAnEmptyDatagram)
{
    Phones phones;
    phones.setAnswers({{QByteArray()}, {discoveryReply(u"late"_s, 1)}});
    const Scan found = scan({Phones::network, 20s, 20s});
    EXPECT_EQ(found.outcome, Outcome::cutShort);
    EXPECT_TRUE(found.replies.empty());
    EXPECT_LT(duration_, 10s);
}

TEST_F(UdpScannerTest, bearsANetworkWithoutARoute)
{
    EXPECT_EQ(scan({ScanRules().to, silence, 10s}).outcome, Outcome::complete);
    EXPECT_GE(duration_, silence);
}

TEST_F(UdpScannerTest, endsInAFlood)
{
    std::vector<Phones::Answer> crowd;
    for (std::uint32_t host = 1; host <= 100; ++host) {
        crowd.push_back({discoveryReply(u"a"_s, 1), host});
    }
    const std::pair<std::vector<Phones::Answer>, std::size_t> rows[]
        = {{{{"noise"}}, 0}, {{{discoveryReply(u"a"_s, 1)}}, 8}, {crowd, 256}};
    for (const auto& [answers, replies] : rows) {
        Phones phones;
        phones.setAnswers(answers);
        phones.flood();
        const Scan found = scan({Phones::network, 5s, 500ms});
        EXPECT_EQ(found.outcome, Outcome::cutShort);
        EXPECT_EQ(found.replies.size(), replies);
        EXPECT_LT(duration_, 5s);
    }
}

TEST_F(UdpScannerTest, isNotCompleteWhenAHostSaysTooMuch)
{
    Phones phones;
    phones.setAnswers(std::vector<Phones::Answer>(9, {discoveryReply(u"a"_s, 1)}));
    const Scan found = scan();
    EXPECT_EQ(found.outcome, Outcome::cutShort);
    EXPECT_EQ(found.replies.size(), 8U);
}

TEST_F(UdpScannerTest, isCutShortByAStop)
{
    std::thread stopper([this] {
        std::this_thread::sleep_for(50ms);
        stop_.request_stop();
    });
    EXPECT_EQ(scan({Phones::network, 20s, 20s}).outcome, Outcome::cutShort);
    stopper.join();
    EXPECT_EQ(scan({Phones::network, 20s, 20s}).outcome, Outcome::cutShort)
        << "asked to stop before it begins";
    EXPECT_LT(duration_, 10s);
}
