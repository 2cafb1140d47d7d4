#include "discovery/FerrylaneDeviceDiscovery.h"

#include "discovery/UdpScanner.h"
#include "pairing/PairedTargets.h"
#include "platform/Files.h"
#include "platform/ThreadQueue.h"
#include "support/ManualQueue.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ferrylane;
using namespace std::chrono_literals;

namespace {

struct Heard {
    QString name;
    std::optional<std::uint16_t> port;
    std::uint32_t host = 0xC0A80114;
};

/// What the fakes, which belong to the discovery, share with the test.
struct Network {
    int browsersMade = 0;
    QString type;
    platform::ServiceBrowser::ResultsHandler results; ///< empty while nobody browses
    platform::ServiceBrowser::FailureHandler failure;
    QList<Heard> replies;
    DiscoveryScanner::Outcome outcome = DiscoveryScanner::Outcome::complete;
    int scans = 0;
    std::function<void()> duringScan = [] {}; ///< in the next one
};

class FakeBrowser final : public platform::ServiceBrowser {
public:
    explicit FakeBrowser(Network& network) : network_(network) { ++network_.browsersMade; }
    ~FakeBrowser() override { network_.results = nullptr; }

    void start(const QString& type, ResultsHandler onResults, FailureHandler onFailure) override
    {
        network_.type = type;
        network_.results = std::move(onResults);
        network_.failure = std::move(onFailure);
    }
    void stop() override { network_.results = nullptr; }

private:
    Network& network_;
};

class FakeScanner final : public DiscoveryScanner {
public:
    explicit FakeScanner(Network& network) : network_(network) {}

    Outcome scan(const ReplyHandler& onReply, const std::stop_token& stop) override
    {
        ++network_.scans;
        std::exchange(network_.duringScan, [] {})();
        for (const Heard& heard : network_.replies) {
            onReply({heard.name, heard.port}, {heard.host, discoveryPort});
        }
        if (stop.stop_requested()) return Outcome::cutShort;
        return network_.outcome;
    }

private:
    Network& network_;
};

class DeviceDiscovery : public testing::Test {
protected:
    DeviceDiscovery()
    {
        auto queue = std::make_unique<support::ManualQueue>();
        queue_ = queue.get();
        discovery_ = make(std::move(queue), std::make_unique<FakeScanner>(network_));
    }

    std::unique_ptr<FerrylaneDeviceDiscovery> make(
        std::unique_ptr<platform::SerialQueue> queue, std::unique_ptr<DiscoveryScanner> scanner)
    {
        auto discovery = std::make_unique<FerrylaneDeviceDiscovery>(
            FerrylaneDeviceDiscovery::Parts{mainQueue_, clock_, std::move(queue),
                [this] { return std::make_unique<FakeBrowser>(network_); }, std::move(scanner),
                [] { return u"Office Mac"_s; }});
        discovery->setOnChange([this](const QStringList& names) {
            published_.append(u'[' + names.join(u',') + u']');
        });
        return discovery;
    }

    /// What the handler has been given since the last call.
    QString published()
    {
        queue_->runAll();
        mainQueue_.runAll();
        return std::exchange(published_, {}).join(u' ');
    }

    void pass(platform::Duration duration)
    {
        clock_.advance(duration);
        queue_->advance(duration);
    }

    support::PrivateUserFolders home_;
    support::ManualClock clock_;
    support::ManualQueue mainQueue_;
    Network network_;
    support::ManualQueue* queue_;
    QStringList published_;
    std::unique_ptr<FerrylaneDeviceDiscovery> discovery_;
};

} // namespace

TEST_F(DeviceDiscovery, mergesBothSources)
{
    network_.replies = {{u"pixel"_s, 8787}, {u"OFFICE MAC"_s, 8788}, {u"zoe"_s, std::nullopt}};
    discovery_->start();
    EXPECT_EQ(published(), u"[pixel,zoe]"_s);
    EXPECT_EQ(network_.type, u"_ferrylane._tcp"_s);

    network_.replies = {};
    network_.results({u"Moto ferrylane"_s, u"pixel"_s, u"Pixel"_s, u"office mac Ferrylane"_s});
    EXPECT_EQ(published(), u"[Moto,Pixel,pixel,zoe]"_s);
    network_.results({});
    EXPECT_EQ(published(), u"[pixel,zoe]"_s);
    EXPECT_TRUE(home_.log().endsWith(u"Z  Nearby devices: pixel, zoe\n"))
        << qPrintable(home_.log());

    network_.failure(u"no daemon"_s);
    EXPECT_EQ(published(), u""_s);
    EXPECT_TRUE(home_.log().endsWith(u"Z  Ferrylane device discovery failed: no daemon\n"));
}

TEST_F(DeviceDiscovery, scansEveryThreeSecondsAndForgetsAfterTen)
{
    network_.replies = {{u"a"_s, std::nullopt}};
    discovery_->start();
    discovery_->start();
    EXPECT_EQ(published(), u"[a]"_s);
    EXPECT_EQ(network_.browsersMade, 1);
    network_.replies = {};
    for (const int second : {3, 6, 9}) {
        pass(3s);
        EXPECT_EQ(published(), u"[a]"_s) << second;
    }
    EXPECT_EQ(home_.log().count(u"Nearby devices"), 1) << "only what changes is logged";
    clock_.advance(1s);
    network_.results({});
    EXPECT_EQ(published(), u"[a]"_s) << "ten seconds to the instant";
    pass(3s);
    EXPECT_EQ(published(), u"[]"_s);
    EXPECT_EQ(network_.scans, 5);

    network_.outcome = DiscoveryScanner::Outcome::notAsked;
    pass(3s);
    EXPECT_EQ(published(), u""_s) << "nothing could be asked";
}

TEST_F(DeviceDiscovery, keepsNoMoreThan256OfThoseThatAnswer)
{
    network_.replies = {{u"first"_s, std::nullopt}};
    discovery_->start();
    EXPECT_EQ(published(), u"[first]"_s);
    network_.replies = {};
    for (int i = 1000; i < 1256; ++i) {
        network_.replies.append({QString::number(i), std::nullopt});
    }
    pass(3s);
    const QString list = published();
    EXPECT_EQ(list.count(u','), 255);
    EXPECT_TRUE(list.endsWith(u",first]")) << qPrintable(list);
    EXPECT_LT(home_.log().size(), 1300);

    // A list that changes at every look for an hour.
    for (int look = 0; look < 1200; ++look) {
        network_.results({QString::number(look)});
        pass(3s);
        static_cast<void>(published());
    }
    EXPECT_LT(home_.log().size(), 200000);
}

TEST_F(DeviceDiscovery, movesAPairedPhoneOnlyWhileOneHostHasItsName)
{
    const QString key(43, u'A');
    ASSERT_TRUE(saveFerrylanePairedTarget({u"Pixel"_s, u"http://192.168.1.9:8787"_s, key}));
    constexpr std::uint32_t other = 0xC0A80115;
    constexpr auto unreachable = std::nullopt;
    const struct {
        QList<Heard> replies;
        QString address;
        int warnings;
    } scans[] = {
        {{{u"Pixel 2"_s, 1}}, u"9:8787"_s, 0},
        {{{u"pixel"_s, 1}, {u"pixel"_s, unreachable}}, u"20:1"_s, 0},
        {{{u"Pixel"_s, unreachable, other}}, u"20:1"_s, 0},
        {{{u"pixel"_s, 1}, {u"PIXEL"_s, 1, other}}, u"20:1"_s, 1},
        {{{u"Pixel"_s, 2, other}, {u"Pixel"_s, 2}}, u"20:1"_s, 1},
        {{}, u"20:1"_s, 1},
        {{{u"Pixel"_s, 2, other}}, u"21:2"_s, 1},
        {{{u"Pixel"_s, 2, other}, {u"Pixel"_s, unreachable}}, u"21:2"_s, 2},
    };
    discovery_->start();
    for (const auto& scan : scans) {
        network_.replies = scan.replies;
        queue_->advance(3s);
        EXPECT_EQ(
            loadFerrylanePairedTargets().value(0).baseURL, u"http://192.168.1."_s + scan.address);
        EXPECT_EQ(home_.log().count(u"More than one device calls itself Pixel"), scan.warnings);
    }
    // Neither of these scans has heard everybody.
    network_.replies = {{u"Pixel"_s, 3}};
    network_.outcome = DiscoveryScanner::Outcome::cutShort;
    queue_->advance(3s);
    network_.duringScan = [this] { discovery_->stop(); };
    queue_->advance(3s);
    EXPECT_EQ(loadFerrylanePairedTargets().value(0).baseURL, u"http://192.168.1.21:2"_s);
}

TEST_F(DeviceDiscovery, takesBrowseResultsThatComeDuringAScan)
{
    network_.duringScan = [this] { network_.results({u"a"_s}); };
    discovery_->start();
    EXPECT_EQ(published(), u"[] [a]"_s);
}

TEST_F(DeviceDiscovery, publishesOneEmptyListWhenStopped)
{
    network_.replies = {{u"a"_s, 1}};
    discovery_->start();
    queue_->runAll(); // found and on their way to the handlers
    const auto lateResults = network_.results;
    discovery_->stop();
    EXPECT_FALSE(network_.results) << "browsing has ended";
    lateResults({u"late"_s});
    EXPECT_EQ(published(), u"[]"_s);
    EXPECT_TRUE(home_.log().endsWith(u"Z  Nearby devices: \n")) << qPrintable(home_.log());
    pass(60s);
    EXPECT_EQ(published(), u""_s);
    EXPECT_EQ(network_.scans, 1);
    EXPECT_EQ(queue_->delayedCount(), 0U);

    network_.replies = {};
    discovery_->start();
    EXPECT_EQ(published(), u"[]"_s) << "nothing is left of the earlier run";
    EXPECT_EQ(network_.browsersMade, 2);

    // A stop while a scan runs, and a start right after, as after a change of the network.
    network_.replies = {{u"b"_s, 1}};
    network_.duringScan = [this] {
        discovery_->stop();
        discovery_->start();
    };
    pass(3s);
    EXPECT_EQ(published(), u"[] [b]"_s);
    EXPECT_EQ(queue_->delayedCount(), 1U);
}

TEST_F(DeviceDiscovery, endsAtAnyMomentOfItsFirstLook)
{
    network_.replies = {{u"a"_s, 1}};
    for (int i = 0; i < 2000; ++i) {
        const auto discovery = make(std::make_unique<platform::ThreadQueue>("discovery"),
            std::make_unique<FakeScanner>(network_));
        discovery->start();
        std::this_thread::sleep_for(std::chrono::microseconds(i % 200));
    }
}

TEST_F(DeviceDiscovery, stopsAtOnceWithAScanInFlight)
{
    // A phone that answers each request, and more than once.
    const auto phone = platform::DatagramSocket::bound(discoveryPort, support::patience);
    std::atomic<int> requests = 0;
    std::thread answering([&] {
        std::array<std::byte, 100> buffer{};
        const QByteArray reply = discoveryReply(u"a"_s, 1);
        for (;;) {
            const auto received = phone->receive(buffer);
            if (received.outcome != platform::DatagramSocket::Outcome::received) return;
            ++requests;
            for (int i = 0; i < 50; ++i) {
                phone->send(platform::bytesOf(reply), received.source);
            }
        }
    });

    const platform::SteadyClock clock;
    const auto scanner = [&] {
        return std::make_unique<UdpScanner>(clock, platform::Endpoint{0x7F000001, discoveryPort});
    };
    auto discovery = make(std::make_unique<platform::ThreadQueue>("discovery"), scanner());
    const auto start = std::chrono::steady_clock::now();
    for (int i = 1; i <= 20; ++i) {
        discovery->start();
        ASSERT_TRUE(support::waitUntil([&] { return requests >= i; }));
        if (i % 2 == 0) mainQueue_.runAll();
        discovery->stop();
        mainQueue_.runAll();
        EXPECT_EQ(published_.back(), u"[]"_s);
        published_.clear();
        mainQueue_.runAll();
        EXPECT_EQ(published_, QStringList());
    }
    discovery->start();
    ASSERT_TRUE(support::waitUntil([&] { return requests > 20; }));
    discovery.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 20 * UdpScanner::silence);
    mainQueue_.runAll();
    EXPECT_EQ(published_, QStringList());

    phone->close();
    answering.join();
}
