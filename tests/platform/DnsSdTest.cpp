#include "platform/DnsSd.h"

#include "support/EventLoop.h"
#include "support/Host.h"
#include "support/QtPrinting.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace std::chrono_literals;
using support::contentOf;
using support::PrivateAvahi;
using support::processEventsUntil;

const QString type = QStringLiteral("_ferrylane-test._tcp");
constexpr auto retryInterval = 50ms;

void letPass(std::chrono::milliseconds time)
{
    EXPECT_FALSE(processEventsUntil([] { return false; }, time));
}

struct Publisher {
    explicit Publisher(const PrivateAvahi& avahi) : service({avahi.busAddress(), retryInterval})
    {
        QObject::connect(
            &service, &ServicePublisher::told, [this](const QString& line) { log.append(line); });
    }
    [[nodiscard]] bool logs(qsizetype lines) const
    {
        return processEventsUntil([&] { return log.size() == lines; });
    }

    QStringList log;
    ServicePublisher service;
};

struct Browser {
    explicit Browser(const PrivateAvahi& avahi, const ServicePublisher* own = nullptr)
        : service(own, {avahi.busAddress(), retryInterval})
    {
        QObject::connect(&service, &ServiceBrowser::namesChanged,
            [this](const QStringList& names) { results.append(names); });
        QObject::connect(&service, &ServiceBrowser::failed, [this](const QString&) { ++failures; });
        service.start(type);
    }
    [[nodiscard]] QStringList last() const { return results.value(results.size() - 1); }
    [[nodiscard]] bool finds(const QStringList& names) const
    {
        return processEventsUntil([&] { return last() == names; });
    }

    QList<QStringList> results;
    int failures = 0;
    ServiceBrowser service;
};

class DnsSdTest : public ::testing::Test {
protected:
    void startAll()
    {
        avahi.startBus();
        avahi.startDaemon();
    }
    [[nodiscard]] support::Command command(const QString& program, const QStringList& arguments)
    {
        return {QStringLiteral("/usr/bin/") + program, arguments, avahi.environment(), {}, {}, {}};
    }
    /// Whether another program of this computer finds `service`.
    bool othersFind(const QString& service)
    {
        const QTemporaryDir folder;
        support::Command browse
            = command(QStringLiteral("avahi-browse"), {QStringLiteral("-prt"), type});
        browse.outputFile = folder.filePath(QStringLiteral("output"));
        return processEventsUntil([&] {
            support::ChildProcess process;
            process.start(browse);
            // It may wait for ever for a service that has gone meanwhile.
            process.waitForEnd(3s);
            return contentOf(browse.outputFile).contains(service.toUtf8());
        });
    }

    PrivateAvahi avahi{QStringLiteral("this-computer")};
};

TEST_F(DnsSdTest, AnnouncesAndWithdraws)
{
    startAll();
    Publisher publisher(avahi);
    auto other = std::make_unique<Publisher>(avahi);
    const Browser browser(avahi);
    publisher.service.publish(QStringLiteral("before"), type, 8000);
    publisher.service.publish(QStringLiteral("Desk"), type, 8080);
    other->service.publish(QStringLiteral("Ärger"), type, 8081);
    ASSERT_TRUE(browser.finds({QStringLiteral("Desk"), QStringLiteral("Ärger")}));
    EXPECT_TRUE(
        othersFind(QStringLiteral(";Desk;%1;local;this-computer.local;127.0.0.1;8080;").arg(type)));

    other.reset();
    publisher.service.withdraw();
    ASSERT_TRUE(browser.finds({}));
    for (int i = 0; i < 5; ++i) {
        publisher.service.withdraw();
        publisher.service.publish(QStringLiteral("Desk"), type, 8080);
        letPass(i * 5ms);
    }
    EXPECT_TRUE(browser.finds({QStringLiteral("Desk")}));

    // Everything is announced anew then.
    support::ChildProcess renaming;
    renaming.start(command(QStringLiteral("avahi-set-host-name"), {QStringLiteral("renamed")}));
    EXPECT_TRUE(
        othersFind(QStringLiteral(";Desk;%1;local;renamed.local;127.0.0.1;8080;").arg(type)));
    EXPECT_EQ(publisher.log, QStringList());
    EXPECT_EQ(browser.failures, 0);
}

TEST_F(DnsSdTest, TakesAnotherNameWhenItsOwnIsTaken)
{
    support::Host computer(QStringLiteral("computer"));
    support::Host other(QStringLiteral("other"));
    support::Host::connect(computer, other);
    int address = 1;
    for (support::Host* const host : {&computer, &other}) {
        host->setAddress(QStringLiteral("10.0.0.%1").arg(address++));
        host->avahi().startBus();
        host->avahi().startDaemon();
    }
    support::ChildProcess neighbour;
    other.start(neighbour, QStringLiteral("neighbour"), QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"),
            QStringLiteral("exec avahi-publish --service Desk %1 80 2>&1").arg(type)});
    // It may be found before it has the name for good.
    ASSERT_TRUE(processEventsUntil(
        [&] { return other.outputOf(QStringLiteral("neighbour")).startsWith("Established"); }));
    const Browser browser(computer.avahi());
    ASSERT_TRUE(browser.finds({QStringLiteral("Desk")}));

    Publisher second(computer.avahi());
    second.service.publish(QStringLiteral("Desk"), type, 81);
    ASSERT_TRUE(browser.finds({QStringLiteral("Desk"), QStringLiteral("Desk #2")}));
    Publisher third(computer.avahi());
    third.service.publish(QStringLiteral("Desk #2"), type, 82);
    ASSERT_TRUE(browser.finds(
        {QStringLiteral("Desk"), QStringLiteral("Desk #2"), QStringLiteral("Desk #3")}));
    EXPECT_TRUE(Browser(computer.avahi(), &second.service)
                    .finds({QStringLiteral("Desk"), QStringLiteral("Desk #3")}));

    ASSERT_TRUE(second.logs(1));
    EXPECT_EQ(second.log.last(),
        QStringLiteral("DNS-SD: the name “Desk” is taken; announced as “Desk #2”"));
    ASSERT_TRUE(third.logs(1));
    EXPECT_EQ(third.log.last(),
        QStringLiteral("DNS-SD: the name “Desk #2” is taken; announced as “Desk #3”"));
}

TEST_F(DnsSdTest, ComesBackWithBusAndDaemon)
{
    Publisher publisher(avahi);
    publisher.service.publish(QStringLiteral("Desk"), type, 8080);
    const Browser browser(avahi);
    const struct {
        const char* what;
        std::function<void()> lose;
        std::function<void()> bringBack;
    } losses[] = {
        {"no bus at first", [] {}, [&] { startAll(); }},
        {"daemon", [&] { avahi.killDaemon(); }, [&] { avahi.startDaemon(); }},
        {"bus, which is back before the daemon", [&] { avahi.killBus(); },
            [&] {
                avahi.startBus();
                letPass(3 * retryInterval);
                avahi.startDaemon();
            }},
    };
    int count = 0;
    for (const auto& [what, lose, bringBack] : losses) {
        SCOPED_TRACE(what);
        lose();
        ++count;
        ASSERT_TRUE(browser.finds({}));
        ASSERT_TRUE(publisher.logs(2 * count - 1));
        letPass(3 * retryInterval);
        EXPECT_EQ(browser.failures, count);
        bringBack();
        ASSERT_TRUE(browser.finds({QStringLiteral("Desk")}));
        ASSERT_TRUE(publisher.logs(2 * count));
        EXPECT_EQ(publisher.log.last(), QStringLiteral("DNS-SD is back: announced as “Desk”"));
    }
    EXPECT_EQ(browser.results.size(), 2 * count - 1) << "a change has been told twice";
}

TEST_F(DnsSdTest, WaitsForDescriptors)
{
    startAll();
    const Browser atWork(avahi); // Qt's own means are there
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const int firstFree = dup(0);
    close(firstFree);
    const rlimit none{static_cast<rlim_t>(firstFree), usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    Publisher publisher(avahi);
    publisher.service.publish(QStringLiteral("Desk"), type, 8080);
    const Browser browser(avahi);
    letPass(3 * retryInterval);
    EXPECT_EQ(publisher.log.size(), 1);
    EXPECT_EQ(browser.failures, 1);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_TRUE(browser.finds({QStringLiteral("Desk")}));
}

TEST_F(DnsSdTest, WaitsForNothingThatHangs)
{
    startAll();
    for (const bool isBus : {false, true}) {
        Publisher publisher(avahi);
        publisher.service.publish(QStringLiteral("Desk"), type, 8080);
        auto browser = std::make_unique<Browser>(avahi);
        ASSERT_TRUE(browser->finds({QStringLiteral("Desk")}));
        const auto signal
            = [&](int number) { isBus ? avahi.signalBus(number) : avahi.signalDaemon(number); };
        signal(SIGSTOP);
        const auto start = std::chrono::steady_clock::now();
        browser = std::make_unique<Browser>(avahi);
        {
            Publisher other(avahi);
            other.service.publish(QStringLiteral("Other"), type, 8081);
            letPass(20ms);
        }
        publisher.service.withdraw();
        publisher.service.publish(QStringLiteral("Later"), type, 8082);
        letPass(20ms);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s); // D-Bus itself waits 25 s
        signal(SIGCONT);
        EXPECT_TRUE(browser->finds({QStringLiteral("Later")}));
    }
}

TEST_F(DnsSdTest, AnnouncesNoNonsense)
{
    startAll();
    const Browser browser(avahi);
    Publisher publisher(avahi);
    const struct {
        QString name;
        QString type;
        std::uint16_t port;
        const char* reason;
    } rows[] = {
        {QString(), type, 80, "“”: Invalid service name"},
        {QStringLiteral("\n"), type, 80, "“”: Invalid service name"},
        {QString(QChar(0xFFFE)), type, 80, "“\uFFFE”: Invalid host name"},
        {QStringLiteral("Desk"), QString(), 80, "“Desk”: Invalid service type"},
        {QStringLiteral("Desk"), QStringLiteral("http"), 80, "“Desk”: Invalid service type"},
    };
    qsizetype count = 0;
    for (const auto& row : rows) {
        publisher.service.publish(row.name, row.type, row.port);
        ASSERT_TRUE(publisher.logs(++count));
        EXPECT_EQ(publisher.log.last(),
            QStringLiteral("DNS-SD cannot announce ") + QString::fromUtf8(row.reason));
    }
    // Strange, but a name all the same.
    const QString start = QStringLiteral(" a.b\\c;\"%s\"");
    publisher.service.publish(start + QChar(0xD800) + QString(100, u'x'), type, 80);
    EXPECT_TRUE(browser.finds({start + u'?' + QString(62 - start.size(), u'x')}));
}

TEST_F(DnsSdTest, KeepsWhoIsThereInACrowd)
{
    startAll();
    Publisher publisher(avahi);
    publisher.service.publish(QStringLiteral("Zoe"), type, 80);
    const Browser browser(avahi);
    ASSERT_TRUE(browser.finds({QStringLiteral("Zoe")}));

    constexpr auto announcing = R"(
import dbus, time
bus = dbus.SystemBus()
name = 'org.freedesktop.Avahi'
server = dbus.Interface(bus.get_object(name, '/'), name + '.Server')
for i in range(600):
    group = dbus.Interface(bus.get_object(name, server.EntryGroupNew()), name + '.EntryGroup')
    group.AddService(-1, -1, dbus.UInt32(0), 'phone %03d' % i, '%TYPE', '', '', dbus.UInt16(80),
        dbus.Array([], signature='ay'))
    group.Commit()
time.sleep(60)
)";
    support::ChildProcess crowd;
    crowd.start(command(QStringLiteral("python3"),
        {QStringLiteral("-c"),
            QString::fromUtf8(announcing).replace(QStringLiteral("%TYPE"), type)}));
    ASSERT_TRUE(processEventsUntil([&] { return browser.last().size() == 256; }));
    EXPECT_EQ(browser.last().first(), QStringLiteral("Zoe"));
    crowd.kill();
    EXPECT_TRUE(browser.finds({QStringLiteral("Zoe")}));
    EXPECT_LT(browser.results.size(), 60) << "names are reported in bursts";
}

TEST(ServiceNameTest, FitsIntoALabel)
{
    const QString x = QStringLiteral("x");
    const QString family = QStringLiteral("👩‍👩‍👧"); // 18 bytes
    const QString accent(QChar(0x0301));                         // 2 bytes
    const struct {
        QString name;
        QString expected;
    } rows[] = {
        {QString(), QString()},
        {QStringLiteral("Desk – Ä"), QStringLiteral("Desk – Ä")},
        {QStringLiteral("\tDe\u0000s\u007Fk\r\n"), QStringLiteral("Desk")},
        {x.repeated(63), x.repeated(63)},
        {x.repeated(64), x.repeated(63)},
        {x.repeated(100'000), x.repeated(63)},
        {QStringLiteral("ä").repeated(40), QStringLiteral("ä").repeated(31)},
        {x.repeated(45) + family, x.repeated(45) + family},
        {x.repeated(46) + family, x.repeated(46)},
        {x.repeated(61) + accent, x.repeated(61) + accent},
        {x.repeated(62) + accent, x.repeated(61)},
        {x + accent.repeated(40), x + accent.repeated(31)},
        {QStringLiteral("👍").repeated(40), QStringLiteral("👍").repeated(15)},
        {x.repeated(63) + QStringLiteral("👍"), x.repeated(63)},
        {QString(QChar(0xDC00)), QStringLiteral("?")},
    };
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(serviceName(name), expected);
    }
}

TEST(ServiceNameTest, CountsUp)
{
    const QString umlauts = QStringLiteral("ä").repeated(31);
    const std::pair<QString, QString> rows[] = {
        {QStringLiteral("Desk"), QStringLiteral("Desk #2")},
        {QStringLiteral("Desk #2"), QStringLiteral("Desk #3")},
        {QStringLiteral("Desk #9 #99"), QStringLiteral("Desk #9 #100")},
        {QStringLiteral("Desk #0"), QStringLiteral("Desk #0 #2")},
        {umlauts, umlauts.first(30) + QStringLiteral(" #2")},
        {umlauts.first(30) + QStringLiteral(" #9"), umlauts.first(29) + QStringLiteral(" #10")},
    };
    for (const auto& [name, next] : rows) {
        EXPECT_EQ(alternativeServiceName(name), next);
    }
}

} // namespace
} // namespace platform
