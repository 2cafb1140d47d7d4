#include "platform/NetworkPathMonitor.h"

#include "platform/NetworkInterfaces.h"
#include "support/ChildProcess.h"
#include "support/EventLoop.h"

#include <gtest/gtest.h>

#include <vector>

namespace platform {
namespace {

using support::processEventsUntil;

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
        for (const InterfaceAddress& address : addresses) {
            ASSERT_TRUE(address.isLoopback) << address.interfaceName.toStdString();
        }
    }
};

TEST_F(NetworkPathMonitorTest, TellsEachChangeOnce)
{
    const NetworkPathMonitor monitor;
    std::vector<bool> updates;
    QObject::connect(&monitor, &NetworkPathMonitor::pathChanged,
        [&](bool isSatisfied) { updates.push_back(isSatisfied); });
    std::vector<bool> expected{false};
    ASSERT_TRUE(processEventsUntil([&] { return updates == expected; }));

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
        EXPECT_TRUE(processEventsUntil([&] { return updates.size() >= expected.size(); }));
        // Whatever was one too many would come now.
        EXPECT_FALSE(
            processEventsUntil([] { return false; }, 3 * NetworkPathMonitor::mergeInterval));
        ASSERT_EQ(updates, expected);
    }
}

} // namespace
} // namespace platform
