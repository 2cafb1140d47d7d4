#include "discovery/UdpScanner.h"

#include "support/Waiting.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace ferrylane;
using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t loopback = 0x7F000001;
using Outcome = DiscoveryScanner::Outcome;

/// Waits for one request and answers it with these datagrams.
class Phone {
public:
    explicit Phone(const std::vector<QByteArray>& answers)
        : thread_([this, answers] { run(answers); })
    {
    }
    ~Phone()
    {
        done_ = true;
        socket_->close();
        thread_.join();
    }

    /// Repeats the last answer until this goes.
    void flood() { flooding_ = true; }
    [[nodiscard]] bool wasAsked() const { return asked_; }

private:
    void run(const std::vector<QByteArray>& answers)
    {
        std::array<std::byte, 100> buffer{};
        const auto received = socket_->receive(buffer);
        if (received.outcome != platform::DatagramSocket::Outcome::received) return;
        asked_ = isDiscoveryRequest(platform::ByteView(buffer).first(received.length));
        for (const QByteArray& answer : answers) {
            socket_->send(platform::bytesOf(answer), received.source);
        }
        while (flooding_ && !done_) {
            socket_->send(platform::bytesOf(answers.back()), received.source);
        }
    }

    std::atomic<bool> asked_ = false;
    std::atomic<bool> flooding_ = false;
    std::atomic<bool> done_ = false;
    std::shared_ptr<platform::DatagramSocket> socket_
        = platform::DatagramSocket::bound(discoveryPort, support::patience);
    std::thread thread_;
};

class UdpScannerTest : public testing::Test {
protected:
    DiscoveryScanner::Outcome scan(const platform::Endpoint& to = {loopback, discoveryPort})
    {
        const auto start = std::chrono::steady_clock::now();
        const auto outcome
            = UdpScanner(clock_, to)
                  .scan(
                      [this](const DiscoveryReply& reply, const platform::Endpoint& source) {
                          names_.append(reply.name);
                          EXPECT_EQ(source, (platform::Endpoint{loopback, discoveryPort}));
                      },
                      stop_.get_token());
        duration_ = std::chrono::steady_clock::now() - start;
        return outcome;
    }

    platform::SteadyClock clock_;
    std::stop_source stop_;
    QStringList names_;
    platform::Duration duration_{};
};

} // namespace

TEST_F(UdpScannerTest, collectsTheRepliesUntilNoneComes)
{
    const Phone phone({discoveryReply(QStringLiteral("a"), 1), "no reply",
        discoveryRequest.toByteArray(), discoveryReply(QStringLiteral("b"), 2)});
    EXPECT_EQ(scan(), Outcome::complete);
    EXPECT_TRUE(phone.wasAsked());
    EXPECT_EQ(names_, QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_GE(duration_, UdpScanner::silence);
}

TEST_F(UdpScannerTest, endsWithAnEmptyDatagram)
{
    const Phone phone({QByteArray(), discoveryReply(QStringLiteral("late"), 1)});
    EXPECT_EQ(scan(), Outcome::cutShort);
    EXPECT_TRUE(names_.isEmpty());
    EXPECT_LT(duration_, UdpScanner::silence);
}

TEST_F(UdpScannerTest, bearsANetworkWithoutARoute)
{
    EXPECT_EQ(scan(UdpScanner::everyone), Outcome::complete);
    EXPECT_GE(duration_, UdpScanner::silence);
}

TEST_F(UdpScannerTest, endsInAFlood)
{
    /// Says after a few looks that the time is over.
    class HastyClock final : public platform::Clock {
    public:
        [[nodiscard]] platform::TimePoint now() const override
        {
            return platform::TimePoint(++looks_ * 500ms);
        }

    private:
        mutable int looks_ = 0;
    };
    for (const auto& [datagram, replies] :
        {std::pair(QByteArray("noise"), 0), std::pair(discoveryReply(QStringLiteral("a"), 1), 8)}) {
        Phone phone({datagram});
        phone.flood();
        const HastyClock clock;
        int count = 0;
        const auto outcome
            = UdpScanner(clock, {loopback, discoveryPort})
                  .scan([&](const auto&, const auto&) { ++count; }, stop_.get_token());
        EXPECT_EQ(outcome, Outcome::cutShort);
        EXPECT_EQ(count, replies);
    }
}

TEST_F(UdpScannerTest, isCutShortByAStop)
{
    std::thread stopper([this] {
        std::this_thread::sleep_for(50ms);
        stop_.request_stop();
    });
    EXPECT_EQ(scan(), Outcome::cutShort);
    EXPECT_LT(duration_, UdpScanner::silence);
    stopper.join();

    EXPECT_EQ(scan(), Outcome::cutShort) << "asked to stop before it begins";
    EXPECT_LT(duration_, UdpScanner::silence);
}
