#include "platform/NetworkPathMonitor.h"

#include "platform/NetworkInterfaces.h"
#include "support/ChildProcess.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <vector>

namespace platform {
namespace {

using namespace std::chrono_literals;
using support::waitUntil;

/// Written by the monitor's thread, read by the test's.
class Updates {
public:
    void add(bool isSatisfied)
    {
        const std::lock_guard lock(mutex_);
        all_.push_back(isSatisfied);
    }
    [[nodiscard]] std::vector<bool> all() const
    {
        const std::lock_guard lock(mutex_);
        return all_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<bool> all_;
};

void run(const char* script)
{
    support::ChildProcess shell;
    shell.start({QStringLiteral("/bin/sh"), {QStringLiteral("-ec"), QString::fromLatin1(script)},
        QProcessEnvironment::systemEnvironment(), {}, {}, {}});
    ASSERT_EQ(shell.waitForEnd(support::patience), 0) << script;
}

class NetworkPathMonitorTest : public ::testing::Test {
protected:
    /// Nothing but a loopback interface: the network is the test program's own.
    void SetUp() override
    {
        const auto addresses = interfaceAddresses();
        ASSERT_TRUE(addresses);
        for (const InterfaceAddress& address : *addresses) {
            ASSERT_TRUE(address.isLoopback) << address.interfaceName.toStdString();
        }
    }
};

TEST_F(NetworkPathMonitorTest, TellsEachChangeOnce)
{
    Updates updates;
    const NetworkPathMonitor monitor(
        "test.path", [&](bool isSatisfied) { updates.add(isSatisfied); });
    std::vector<bool> expected{false};
    ASSERT_TRUE(waitUntil([&] { return updates.all() == expected; }));

    const struct {
        const char* change;
        std::vector<bool> told;
    } steps[] = {
        {"ip address add 127.1.1.1/8 dev lo; ip address delete 127.1.1.1/8 dev lo", {}},
        {"ip link add wire type veth peer name end; ip link set end up", {}},
        {"ip link set wire addrgenmode none; ip link set end addrgenmode none", {}},
        {"ip address add 192.168.1.2/24 dev wire", {}},
        {"ip link set wire up", {true}},
        {"ip link set wire mtu 1400", {}},
        {"ip route add 10.9.0.0/16 dev wire", {}},
        {"ip route add default dev wire", {true}},
        {"ip address add 192.168.1.3/24 dev wire", {true}},
        {"ip address delete 192.168.1.3/24 dev wire", {true}},
        {"ip link set wire down", {false}},
        {"ip address flush dev wire; ip link set wire up", {}},
        {"ip address add fe80::2/64 nodad dev wire", {true}},
        {"ip link set end down", {false}},
        {"ip link set end up", {true}},
        {"ip link delete wire", {false}},
    };
    for (const auto& [change, told] : steps) {
        SCOPED_TRACE(change);
        run(change);
        expected.insert(expected.end(), told.begin(), told.end());
        EXPECT_TRUE(waitUntil([&] { return updates.all().size() >= expected.size(); }));
        // Whatever was one too many would come now.
        std::this_thread::sleep_for(3 * NetworkPathMonitor::mergeInterval);
        ASSERT_EQ(updates.all(), expected);
    }
}

TEST_F(NetworkPathMonitorTest, EndsAtOnceAndForGood)
{
    std::atomic<int> calls = 0;
    for (int i = 0; i < 5; ++i) {
        run("ip link add wire type veth peer name end; ip address add 10.0.0.1/8 dev wire");
        auto monitor = std::make_unique<NetworkPathMonitor>("test.path", [&](bool) { ++calls; });
        ASSERT_TRUE(waitUntil([&] { return calls > 0; }));
        run("ip link set wire up; ip link set end up");
        const auto start = std::chrono::steady_clock::now();
        monitor.reset();
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        calls = 0;
        run("ip link delete wire");
    }
    std::this_thread::sleep_for(2 * NetworkPathMonitor::mergeInterval);
    EXPECT_EQ(calls, 0);
}

} // namespace
} // namespace platform
