#include "platform/ServiceBrowser.h"
#include "platform/ServicePublisher.h"

#include "support/PrivateAvahi.h"
#include "support/QtPrinting.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <mutex>
#include <thread>

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace std::chrono_literals;
using support::contentOf;
using support::PrivateAvahi;
using support::waitUntil;

const QString type = QStringLiteral("_ferrylane-test._tcp");
constexpr auto retryInterval = 50ms;

/// Written by a handler's thread, read by the test's.
template <typename Value> class Recorded {
public:
    void add(const Value& value)
    {
        const std::lock_guard lock(mutex_);
        all_.append(value);
    }
    [[nodiscard]] QList<Value> all() const
    {
        const std::lock_guard lock(mutex_);
        return all_;
    }
    [[nodiscard]] Value last() const
    {
        const std::lock_guard lock(mutex_);
        return all_.isEmpty() ? Value() : all_.last();
    }

private:
    mutable std::mutex mutex_;
    QList<Value> all_;
};

struct Publisher {
    Recorded<QString> log;
    std::unique_ptr<ServicePublisher> service
        = ServicePublisher::create([this](const QString& line) { log.add(line); }, retryInterval);
};

struct Browser {
    Recorded<QStringList> results;
    Recorded<QString> failures;
    std::unique_ptr<ServiceBrowser> service;

    explicit Browser(std::shared_ptr<const AnnouncedName> own = {})
        : service(ServiceBrowser::create(std::move(own), retryInterval))
    {
        service->start(
            type, [this](const QStringList& names) { results.add(names); },
            [this](const QString& reason) { failures.add(reason); });
    }
    ~Browser() { service->stop(); }

    [[nodiscard]] bool finds(const QStringList& names) const
    {
        return waitUntil([&] { return results.last() == names; });
    }
};

class DnsSdTest : public ::testing::Test {
protected:
    // D-Bus reads the address of the system's bus once in a process's life.
    static void SetUpTestSuite()
    {
        avahi = std::make_unique<PrivateAvahi>(QStringLiteral("this-computer"));
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", avahi->busAddress().toUtf8());
    }
    static void TearDownTestSuite() { avahi.reset(); }

    static void startAll()
    {
        avahi->startBus();
        avahi->startDaemon();
    }
    void TearDown() override { avahi->killBus(); }

    // NOLINTNEXTLINE(*-avoid-non-const-global-variables): lives as long as the bus's address
    inline static std::unique_ptr<PrivateAvahi> avahi;
};

void run(const QString& program, const QStringList& arguments, const PrivateAvahi& avahi,
    const QString& output = {})
{
    support::ChildProcess process;
    process.start(
        {QStringLiteral("/usr/bin/") + program, arguments, avahi.environment(), output, {}, {}});
    // avahi-browse may wait for ever for a service that has gone meanwhile.
    process.waitForEnd(3s);
}

/// Whether another program of this computer finds `service`.
bool othersFind(const QString& service, const PrivateAvahi& avahi)
{
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("output"));
    return waitUntil([&] {
        run(QStringLiteral("avahi-browse"), {QStringLiteral("-prt"), type}, avahi, output);
        return contentOf(output).contains(service.toUtf8());
    });
}

TEST_F(DnsSdTest, AnnouncesAndWithdraws)
{
    startAll();
    Publisher publisher;
    Publisher other;
    const Browser browser;
    publisher.service->publish(QStringLiteral("before"), type, 8000);
    publisher.service->publish(QStringLiteral("Desk"), type, 8080);
    other.service->publish(QStringLiteral("Ärger"), type, 8081);
    ASSERT_TRUE(browser.finds({QStringLiteral("Desk"), QStringLiteral("Ärger")}));
    EXPECT_TRUE(othersFind(
        QStringLiteral(";Desk;%1;local;this-computer.local;127.0.0.1;8080;").arg(type), *avahi));

    other.service.reset();
    publisher.service->withdraw();
    ASSERT_TRUE(browser.finds({}));
    publisher.service->publish(QStringLiteral("Desk"), type, 8080);
    EXPECT_TRUE(browser.finds({QStringLiteral("Desk")}));

    // Everything is announced anew then.
    run(QStringLiteral("avahi-set-host-name"), {QStringLiteral("renamed")}, *avahi);
    EXPECT_TRUE(othersFind(
        QStringLiteral(";Desk;%1;local;renamed.local;127.0.0.1;8080;").arg(type), *avahi));
    EXPECT_EQ(publisher.log.all(), QStringList());
    EXPECT_EQ(browser.failures.all(), QStringList());
}

/// A network namespace that a cable leads to from this one.
class OtherNetwork {
public:
    OtherNetwork()
    {
        holder_.start(
            {QStringLiteral("/usr/bin/sleep"), {QStringLiteral("infinity")}, {}, {}, {}, [] {
                 if (unshare(CLONE_NEWNET) != 0) _exit(126);
             }});
        const auto network = [](pid_t process) {
            std::error_code none;
            return std::filesystem::read_symlink(path(process).toStdString(), none);
        };
        EXPECT_TRUE(waitUntil([&] { return network(holder_.processId()) != network(getpid()); }));
        run(QStringLiteral("ip link add cable type veth peer name cable netns %1 && "
                           "ip addr add 10.0.0.1/24 dev cable && ip link set cable up && "
                           "nsenter --net=%2 ip addr add 10.0.0.2/24 dev cable && "
                           "nsenter --net=%2 ip link set cable up")
                .arg(holder_.processId())
                .arg(path()));
    }
    ~OtherNetwork() { run(QStringLiteral("ip link delete cable")); }

    [[nodiscard]] QString path() const { return path(holder_.processId()); }

private:
    static QString path(pid_t process) { return QStringLiteral("/proc/%1/ns/net").arg(process); }
    static void run(const QString& script)
    {
        support::ChildProcess shell;
        shell.start({QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script},
            QProcessEnvironment::systemEnvironment(), {}, {}, {}});
        EXPECT_EQ(shell.waitForEnd(support::patience), 0) << script.toStdString();
    }

    support::ChildProcess holder_;
};

TEST_F(DnsSdTest, TakesAnotherNameWhenItsOwnIsTaken)
{
    const OtherNetwork otherNetwork;
    startAll();
    PrivateAvahi otherComputer(QStringLiteral("other-computer"), otherNetwork.path());
    otherComputer.startBus();
    otherComputer.startDaemon();
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("output"));
    support::ChildProcess otherProgram;
    otherProgram.start({QStringLiteral("/usr/bin/avahi-publish"),
        {QStringLiteral("--service"), QStringLiteral("Desk"), type, QStringLiteral("80")},
        otherComputer.environment(), {}, output, {}});
    // It may be found before it has the name for good.
    ASSERT_TRUE(waitUntil([&] { return contentOf(output).startsWith("Established"); }));
    const Browser browser;
    ASSERT_TRUE(browser.finds({QStringLiteral("Desk")}));

    Publisher second;
    second.service->publish(QStringLiteral("Desk"), type, 81);
    ASSERT_TRUE(browser.finds({QStringLiteral("Desk"), QStringLiteral("Desk #2")}));
    Publisher third;
    third.service->publish(QStringLiteral("Desk #2"), type, 82);
    ASSERT_TRUE(browser.finds(
        {QStringLiteral("Desk"), QStringLiteral("Desk #2"), QStringLiteral("Desk #3")}));
    EXPECT_TRUE(Browser(second.service->announcedName())
                    .finds({QStringLiteral("Desk"), QStringLiteral("Desk #3")}));

    const auto hasLogged = [](const Publisher& publisher, const QString& line) {
        return waitUntil([&] { return publisher.log.all() == QStringList(line); });
    };
    EXPECT_TRUE(hasLogged(
        second, QStringLiteral("DNS-SD: the name “Desk” is taken; announced as “Desk #2”")));
    EXPECT_TRUE(hasLogged(
        third, QStringLiteral("DNS-SD: the name “Desk #2” is taken; announced as “Desk #3”")));
}

TEST_F(DnsSdTest, ComesBackWithBusAndDaemon)
{
    Publisher publisher;
    publisher.service->publish(QStringLiteral("Desk"), type, 8080);
    const Browser browser;
    const struct {
        const char* what;
        std::function<void()> lose;
        std::function<void()> bringBack;
    } losses[] = {
        {"no bus at first", [] {}, [] { startAll(); }},
        {"daemon", [] { avahi->killDaemon(); }, [] { avahi->startDaemon(); }},
        {"bus, which is back before the daemon", [] { avahi->killBus(); },
            [] {
                avahi->startBus();
                std::this_thread::sleep_for(3 * retryInterval);
                avahi->startDaemon();
            }},
    };
    qsizetype count = 0;
    for (const auto& [what, lose, bringBack] : losses) {
        SCOPED_TRACE(what);
        lose();
        ++count;
        ASSERT_TRUE(browser.finds({}));
        ASSERT_TRUE(waitUntil([&] { return browser.failures.all().size() == count; }));
        ASSERT_TRUE(waitUntil([&] { return publisher.log.all().size() == 2 * count - 1; }));
        std::this_thread::sleep_for(3 * retryInterval);
        bringBack();
        ASSERT_TRUE(browser.finds({QStringLiteral("Desk")}));
        ASSERT_TRUE(waitUntil([&] { return publisher.log.all().size() == 2 * count; }));
        EXPECT_EQ(publisher.log.last(), QStringLiteral("DNS-SD is back: announced as “Desk”"));
    }
    EXPECT_EQ(publisher.log.all().size(), 2 * count);
    EXPECT_EQ(browser.failures.all().size(), count);
    EXPECT_EQ(browser.results.all().size(), 2 * count - 1) << "a change has been told twice";
}

TEST_F(DnsSdTest, WaitsForDescriptors)
{
    startAll();
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const int firstFree = dup(0);
    close(firstFree);
    const rlimit none{static_cast<rlim_t>(firstFree), usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    Publisher publisher;
    publisher.service->publish(QStringLiteral("Desk"), type, 8080);
    const Browser browser;
    EXPECT_TRUE(waitUntil(
        [&] { return !publisher.log.all().isEmpty() && !browser.failures.all().isEmpty(); }));
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_TRUE(browser.finds({QStringLiteral("Desk")}));
    EXPECT_EQ(browser.failures.all().size(), 1);
}

TEST_F(DnsSdTest, LetsNobodyWaitForADaemonThatHangs)
{
    startAll();
    Publisher publisher;
    publisher.service->publish(QStringLiteral("Desk"), type, 8080);
    {
        const Browser browser;
        ASSERT_TRUE(browser.finds({QStringLiteral("Desk")}));
    }
    avahi->signalDaemon(SIGSTOP);
    const auto start = std::chrono::steady_clock::now();
    {
        const Browser browser;
        Publisher other;
        other.service->publish(QStringLiteral("Other"), type, 8081);
        publisher.service->publish(QStringLiteral("Desk"), type, 8082);
        publisher.service->withdraw();
        publisher.service.reset();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s); // D-Bus itself waits 25 s
    avahi->signalDaemon(SIGCONT);
}

TEST_F(DnsSdTest, AnnouncesNoNonsense)
{
    startAll();
    const Browser browser;
    Publisher publisher;
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
        publisher.service->publish(row.name, row.type, row.port);
        ++count;
        ASSERT_TRUE(waitUntil([&] { return publisher.log.all().size() == count; }));
        EXPECT_EQ(publisher.log.last(),
            QStringLiteral("DNS-SD cannot announce ") + QString::fromUtf8(row.reason));
    }
    // Strange, but a name all the same.
    const QString start = QStringLiteral(" a.b\\c;\"%s\"");
    publisher.service->publish(start + QChar(0xD800) + QString(100, u'x'), type, 80);
    EXPECT_TRUE(browser.finds({start + u'?' + QString(62 - start.size(), u'x')}));
}

TEST_F(DnsSdTest, KeepsWhoIsThereInACrowd)
{
    startAll();
    Publisher publisher;
    publisher.service->publish(QStringLiteral("Zoe"), type, 80);
    const Browser browser;
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
    crowd.start({QStringLiteral("/usr/bin/python3"),
        {QStringLiteral("-c"),
            QString::fromUtf8(announcing).replace(QStringLiteral("%TYPE"), type)},
        avahi->environment(), {}, {}, {}});
    ASSERT_TRUE(waitUntil([&] { return browser.results.last().size() == 256; }));
    EXPECT_EQ(browser.results.last().first(), QStringLiteral("Zoe"));
    crowd.kill();
    EXPECT_TRUE(browser.finds({QStringLiteral("Zoe")}));
    EXPECT_LT(browser.results.all().size(), 60) << "names are reported in bursts";
}

TEST_F(DnsSdTest, StopIsFinal)
{
    startAll();
    std::vector<std::unique_ptr<Publisher>> publishers;
    QStringList names;
    for (const auto& name : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}) {
        names.append(name);
        publishers.push_back(std::make_unique<Publisher>());
        publishers.back()->service->publish(name, type, 80);
    }
    ASSERT_TRUE(Browser().finds(names));

    std::atomic<int> calls = 0;
    const auto browser = ServiceBrowser::create({}, retryInterval);
    for (int round = 0; round < 50 || calls == 0; ++round) {
        std::atomic<bool> hasStopped = false;
        const auto call = [&] {
            ++calls;
            EXPECT_FALSE(hasStopped);
            std::this_thread::sleep_for(1ms);
            EXPECT_FALSE(hasStopped);
        };
        browser->start(
            type, [call](const QStringList&) { call(); }, [call](const QString&) { call(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(round % 20));
        browser->stop();
        hasStopped = true;
        std::this_thread::sleep_for(1ms);
    }
}

} // namespace
} // namespace platform
