#include "platform/DatagramSocket.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <thread>
#include <vector>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

constexpr std::uint32_t loopback = 0x7F000001;
// Below those that the system hands out; of this process, as the tests may run side by side.
const auto port = static_cast<std::uint16_t>(20000 + ::getpid() % 10000);

struct Datagram {
    DatagramSocket::Received received;
    QByteArray content;
};

Datagram receiveFrom(
    DatagramSocket& socket, std::size_t room = 100, Duration atMost = std::chrono::hours(1))
{
    std::vector<std::byte> buffer(room);
    const auto received = socket.receive(buffer, atMost);
    return {received, toByteArray(MutableByteView(buffer).first(received.length))};
}

TEST(DatagramSocketTest, EachDatagramComesAloneAndCutToTheBuffer)
{
    const auto server = DatagramSocket::bound(port);
    const auto client = DatagramSocket::unbound();
    const QByteArray large(60000, 'l');
    for (const QByteArray& content :
        {QByteArray(), QByteArray("0123456789"), large, QByteArray("end")}) {
        client->send(bytesOf(content), {loopback, port});
    }
    for (const QByteArray& expected :
        {QByteArray(), QByteArray("0123456789"), large.first(10), QByteArray("end")}) {
        const Datagram datagram = receiveFrom(*server, 10);
        EXPECT_EQ(datagram.received.outcome, DatagramSocket::Outcome::received);
        EXPECT_EQ(datagram.content, expected);
        EXPECT_EQ(datagram.received.source.address, loopback);
        EXPECT_NE(datagram.received.source.port, 0);
    }
}

TEST(DatagramSocketTest, CloseWakesTheWaitingReceiver)
{
    for (const bool isBound : {true, false}) {
        const auto socket = isBound ? DatagramSocket::bound(port) : DatagramSocket::unbound();
        // With delays around the moment in which the receiver begins to wait.
        for (const auto delay : {0us, 20us, 100us, 20000us}) {
            const auto start = std::chrono::steady_clock::now();
            auto outcome = DatagramSocket::Outcome::failed;
            std::thread receiver([&] { outcome = receiveFrom(*socket).received.outcome; });
            std::this_thread::sleep_for(delay);
            socket->close();
            receiver.join();
            EXPECT_EQ(outcome, DatagramSocket::Outcome::closed);
            EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        }
    }
}

TEST(DatagramSocketTest, UndeliveredDatagramsAreNoFailureAndTheWaitEnds)
{
    const auto socket = DatagramSocket::unbound();
    const auto start = std::chrono::steady_clock::now();
    // Nobody listens there: the system answers with "port unreachable".
    socket->send(bytesOf("x"), {loopback, port});
    EXPECT_EQ(receiveFrom(*socket, 100, 50ms).received.outcome, DatagramSocket::Outcome::timedOut);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 50ms);
    // Longer than any datagram.
    socket->send(bytesOf(QByteArray(70000, 'x')), {loopback, port});
    socket->send(bytesOf("x"), {0, 0});
    EXPECT_EQ(receiveFrom(*socket, 100, 50ms).received.outcome, DatagramSocket::Outcome::timedOut);
}

/// A socket of another program on the port, with one socket option switched on if any is given.
class OtherSocket {
public:
    explicit OtherSocket(std::optional<int> option)
    {
        const int on = 1;
        if (option) ::setsockopt(descriptor_, SOL_SOCKET, *option, &on, sizeof on);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        EXPECT_EQ(
            ::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    ~OtherSocket() { ::close(descriptor_); }
    OtherSocket(const OtherSocket&) = delete;
    OtherSocket& operator=(const OtherSocket&) = delete;

private:
    int descriptor_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

std::error_code errorOfBinding()
{
    try {
        static_cast<void>(DatagramSocket::bound(port));
    } catch (const std::system_error& error) {
        return error.code();
    }
    return {};
}

TEST(DatagramSocketTest, SharesThePortOnlyWithThoseThatShareIt)
{
    for (const std::optional<int> option :
        {std::optional(SO_REUSEADDR), std::optional(SO_REUSEPORT), std::optional<int>()}) {
        const OtherSocket other(option);
        EXPECT_EQ(errorOfBinding(),
            option ? std::error_code() : std::make_error_code(std::errc::address_in_use));
    }
}

} // namespace
} // namespace platform
