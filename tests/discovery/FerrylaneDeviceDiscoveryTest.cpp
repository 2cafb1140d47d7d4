#include "discovery/FerrylaneDeviceDiscovery.h"

#include "Phones.h"
#include "core/DeviceName.h"
#include "core/Service.h"
#include "pairing/PairedTargets.h"
#include "support/EnvironmentVariable.h"
#include "support/EventLoop.h"
#include "support/PrivateAvahi.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;
using namespace std::chrono_literals;
using support::processEventsUntil;

namespace {

class DeviceDiscovery : public testing::Test {
protected:
    explicit DeviceDiscovery(platform::Duration grace = 60s)
        : discovery_(std::make_unique<FerrylaneDeviceDiscovery>(
            FerrylaneDeviceDiscovery::Rules{{Phones::network, 50ms, 10s}, 80ms, grace}))
    {
        QObject::connect(discovery_.get(), &FerrylaneDeviceDiscovery::namesChanged,
            [this](const QStringList& names) { told_.append(names.join(u',')); });
    }

    [[nodiscard]] bool becomes(const QString& names)
    {
        told_.clear();
        return processEventsUntil([&] { return told_.contains(names); });
    }
    [[nodiscard]] bool staysSilent(std::chrono::milliseconds time)
    {
        told_.clear();
        return !processEventsUntil([&] { return !told_.isEmpty(); }, time);
    }

    [[nodiscard]] std::string told() const { return told_.join(u" | "_s).toStdString(); }

    support::PrivateUserFolders home_;
    support::PrivateAvahi avahi_{u"this-computer"_s};
    support::EnvironmentVariable bus_{"DBUS_SYSTEM_BUS_ADDRESS", avahi_.busAddress().toUtf8()};
    Phones phones_;
    QStringList told_;
    std::unique_ptr<FerrylaneDeviceDiscovery> discovery_;
};

struct ForgetfulDeviceDiscovery : DeviceDiscovery {
    ForgetfulDeviceDiscovery() : DeviceDiscovery(1s) {}
};

} // namespace

TEST_F(DeviceDiscovery, mergesBothSources)
{
    phones_.setNames({u"pixel"_s, ferrylaneDeviceSuffix().toUpper(), u"zoe"_s});
    discovery_->start();
    EXPECT_TRUE(becomes(u"pixel,zoe"_s)) << told();
    EXPECT_EQ(home_.log().count(u"Ferrylane device discovery failed: "), 1) << "no bus yet";

    avahi_.startBus();
    avahi_.startDaemon();
    platform::ServicePublisher publishers[3];
    int next = 0;
    for (const QString& name :
        {u"Moto ferrylane"_s, u"Pixel"_s, ferrylaneDeviceSuffix().toUpper() + u" Ferrylane"_s}) {
        publishers[next++].publish(name, dnsSdServiceType, 1);
    }
    EXPECT_TRUE(becomes(u"Moto,Pixel,pixel,zoe"_s)) << told();
    EXPECT_TRUE(home_.log().endsWith(u"Z  Nearby devices: Moto, Pixel, pixel, zoe\n"));
    for (platform::ServicePublisher& publisher : publishers) {
        publisher.withdraw();
    }
    EXPECT_TRUE(becomes(u"pixel,zoe"_s)) << told();
    phones_.setNames({});
    discovery_->stop();
    EXPECT_TRUE(home_.log().endsWith(u"Z  Nearby devices: \n"));
}

TEST_F(ForgetfulDeviceDiscovery, forgetsWhoFallsSilent)
{
    phones_.setNames({u"a"_s});
    discovery_->start();
    discovery_->start();
    ASSERT_TRUE(becomes(u"a"_s));
    const auto start = std::chrono::steady_clock::now();
    phones_.setNames({});
    const int requests = phones_.requests();
    ASSERT_TRUE(becomes(QString()));
    EXPECT_GT(std::chrono::steady_clock::now() - start, 800ms);
    EXPECT_LT(phones_.requests() - requests, 20) << "one scan at a time";
    EXPECT_EQ(home_.log().count(u"Nearby devices: a"), 1) << "only what changes is logged";
}

TEST_F(DeviceDiscovery, keepsNoMoreThan256OfThoseThatAnswer)
{
    phones_.setNames({u"first"_s});
    discovery_->start();
    ASSERT_TRUE(becomes(u"first"_s));
    // Other names at every look.
    for (std::uint32_t look = 0; look < 40; ++look) {
        std::vector<Phones::Answer> crowd;
        for (std::uint32_t i = 0; i < 40; ++i) {
            crowd.push_back({discoveryReply(QString::number(look * 40 + i), 1), 2 + i / 8});
        }
        phones_.setAnswers(std::move(crowd));
        const int requests = phones_.requests();
        ASSERT_TRUE(processEventsUntil([&] { return phones_.requests() > requests; }));
    }
    EXPECT_EQ(told_.last().count(u','), 255);
    EXPECT_TRUE(told_.last().endsWith(u",first")) << told();
    EXPECT_LE(home_.log().count(u"Nearby devices"), 21);
}

TEST_F(DeviceDiscovery, tellsOfOneEmptyListWhenStopped)
{
    phones_.setNames({u"a"_s});
    for (int i = 0; i < 20; ++i) {
        told_.clear();
        const int requests = phones_.requests();
        discovery_->start();
        ASSERT_TRUE(support::waitUntil([&] { return phones_.requests() > requests; }));
        if (i % 2 == 0) {
            ASSERT_TRUE(becomes(u"a"_s));
        }
        // What it has found is on its way.
        if (i % 4 == 1) std::this_thread::sleep_for(60ms);
        told_.clear();
        discovery_->stop();
        EXPECT_EQ(told_, QStringList(QString()));
        EXPECT_TRUE(i % 3 != 0 || staysSilent(100ms)) << told();
    }
}

TEST_F(DeviceDiscovery, endsAtAnyMomentOfItsFirstLook)
{
    phones_.setNames({u"a"_s});
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 300; ++i) {
        FerrylaneDeviceDiscovery discovery({{Phones::network, 20s, 20s}, 20s, 10s});
        discovery.start();
        std::this_thread::sleep_for(std::chrono::microseconds(i * 7));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 15s) << "waits for no scan";
}

TEST(PairedAddresses, moveAPairedPhoneOnlyWhileOneHostHasItsName)
{
    const support::PrivateUserFolders home;
    ASSERT_TRUE(
        saveFerrylanePairedTarget({u"Pixel"_s, u"http://192.168.1.9:8787"_s, QString(43, u'A')}));
    struct Heard {
        QString name;
        std::optional<std::uint16_t> port;
        std::uint32_t host = 20;
    };
    constexpr auto unreachable = std::nullopt;
    constexpr std::uint32_t other = 21;
    constexpr auto complete = Scan::Outcome::complete;
    const struct {
        QList<Heard> replies;
        QString address;
        int warnings;
        Scan::Outcome outcome = complete;
    } scans[] = {
        {{{u"Pixel 2"_s, 1}}, u"9:8787"_s, 0},
        {{{u"pixel"_s, 1}, {u"pixel"_s, unreachable}}, u"20:1"_s, 0},
        {{{u"Pixel"_s, unreachable, other}}, u"20:1"_s, 0},
        {{{u"pixel"_s, 1}, {u"PIXEL"_s, 1, other}}, u"20:1"_s, 1},
        {{{u"Pixel"_s, 2, other}, {u"Pixel"_s, 2}}, u"20:1"_s, 1},
        {{}, u"20:1"_s, 1},
        {{{u"Pixel"_s, 2, other}}, u"21:2"_s, 1},
        {{{u"Pixel"_s, 2, other}, {u"Pixel"_s, unreachable}}, u"21:2"_s, 2},
        {{{u"Pixel"_s, 3}}, u"21:2"_s, 2, Scan::Outcome::cutShort},
    };
    PairedAddresses addresses;
    for (const auto& row : scans) {
        Scan scan{row.outcome, {}};
        for (const Heard& heard : row.replies) {
            scan.replies.push_back(
                {{heard.name, heard.port}, {0xC0A80100 + heard.host, discoveryPort}, {}});
        }
        addresses.refresh(scan);
        EXPECT_EQ(
            loadFerrylanePairedTargets().value(0).baseURL, u"http://192.168.1."_s + row.address);
        EXPECT_EQ(home.log().count(u"More than one device calls itself Pixel"), row.warnings);
    }
}
