#include "platform/PortHolder.h"

#include "platform/Tcp.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <atomic>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using platform::PortHolder;
using platform::Transport;

namespace {

constexpr std::uint16_t heldPort = 47113;

// For a child, which hands the socket on to the program it becomes.
void openSocket(int family, int type)
{
    sockaddr_storage address{};
    address.ss_family = static_cast<sa_family_t>(family);
    // The port has the same place in both families' addresses.
    reinterpret_cast<sockaddr_in*>(&address)->sin_port = htons(heldPort);
    const int descriptor = socket(family, type, 0);
    if (bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) _exit(1);
    if (type == SOCK_STREAM && listen(descriptor, 1) != 0) _exit(1);
}

} // namespace

TEST(PortHolderTest, isTheProgramThatHasThePortOpen)
{
    struct Row {
        Transport transport;
        int family, type;
    };
    for (const Row row :
        {Row{Transport::tcp, AF_INET, SOCK_STREAM}, Row{Transport::tcp, AF_INET6, SOCK_STREAM},
            Row{Transport::udp, AF_INET, SOCK_DGRAM}, Row{Transport::udp, AF_INET6, SOCK_DGRAM}}) {
        support::ChildProcess holder;
        holder.start({.program = u"/usr/bin/sleep"_s,
            .arguments = {u"1000"_s},
            .beforeProgram = [row] { openSocket(row.family, row.type); }});
        const PortHolder expected{u"sleep"_s, holder.processId()};
        EXPECT_TRUE(support::waitUntil(
            [&] { return platform::holderOfPort(row.transport, heldPort) == expected; }));
        const Transport other = row.transport == Transport::tcp ? Transport::udp : Transport::tcp;
        EXPECT_EQ(platform::holderOfPort(other, heldPort), std::nullopt);
        holder.kill();
        EXPECT_EQ(platform::holderOfPort(row.transport, heldPort), std::nullopt);
    }
}

TEST(PortHolderTest, isNoProgramThatThisOneHasStarted)
{
    platform::TcpNetwork network("test");
    const auto listener = network.listener(heldPort);
    std::atomic<bool> isReady = false;
    listener->start([&](auto /*state*/, const auto& error) { isReady = !error; },
        [](const auto& /*connection*/) {});
    ASSERT_TRUE(support::waitUntil([&] { return isReady.load(); }));

    support::ChildProcess child;
    child.start({.program = u"/usr/bin/sleep"_s, .arguments = {u"1000"_s}});
    // Once it has become that program.
    EXPECT_TRUE(support::waitUntil([&] {
        return support::contentOf(u"/proc/%1/comm"_s.arg(child.processId())) == "sleep\n";
    }));
    EXPECT_EQ(platform::holderOfPort(Transport::tcp, heldPort), std::nullopt);
}
