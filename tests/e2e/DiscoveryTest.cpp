#include "ReceiverTest.h"

#include "support/TestFiles.h"

#include <array>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

// Being found by phones.

using namespace e2e;

namespace {

class Discovery : public ReceiverTest {
protected:
    void SetUp() override
    {
        support::writeFile(home_.settingsFile(), "[General]\nFerrylaneDeviceName=Office | PC\n");
        ReceiverTest::SetUp();
        // It starts after the listener, and a datagram that comes too early is lost.
        ASSERT_TRUE(program_.waitForLog("  UDP discovery responder ready on 8789"));
    }
};

/// The first datagram that comes back for those sent to the responder; empty when none does.
QByteArray replyTo(const QList<QByteArray>& datagrams, std::chrono::milliseconds wait)
{
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(8789);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    for (const QByteArray& datagram : datagrams) {
        sendto(descriptor, datagram.constData(), static_cast<std::size_t>(datagram.size()), 0,
            reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    }
    std::array<char, 2048> buffer{};
    pollfd query{descriptor, POLLIN, 0};
    ssize_t count = 0;
    if (poll(&query, 1, static_cast<int>(wait.count())) == 1) {
        count = recv(descriptor, buffer.data(), buffer.size(), 0);
    }
    close(descriptor);
    return {buffer.data(), count < 0 ? 0 : count};
}

} // namespace

TEST_F(Discovery, answersARequestWithNameAndPortAndNothingElse)
{
    EXPECT_EQ(replyTo({"", "FERRYLANE_DISCOVER_V1\n", QByteArray(2000, 'F')},
                  std::chrono::milliseconds(300)),
        "");
    EXPECT_EQ(replyTo({"FERRYLANE_DISCOVER_V1"}, support::patience),
        "FERRYLANE_HERE_V1|Office   PC|8788");
}
