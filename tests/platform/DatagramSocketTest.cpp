#include "platform/DatagramSocket.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <optional>
#include <thread>
#include <vector>

#include <netinet/in.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Outcome = DatagramSocket::Outcome;

constexpr std::uint32_t loopback = 0x7F000001;
// Below those that the system hands out; of this process, as the tests may run side by side.
const auto port = static_cast<std::uint16_t>(20000 + ::getpid() % 10000);
constexpr Duration longTime = 20s;

struct Datagram {
    DatagramSocket::Received received;
    QByteArray content;
};

Datagram receiveFrom(DatagramSocket& socket, std::size_t room = 100)
{
    std::vector<std::byte> buffer(room);
    const auto received = socket.receive(buffer);
    return {received, toByteArray(MutableByteView(buffer).first(received.length))};
}

TEST(DatagramSocketTest, DatagramsGoThereAndBack)
{
    const auto server = DatagramSocket::bound(port, longTime);
    const auto client = DatagramSocket::unbound(longTime);

    client->send(bytesOf("question"), {loopback, port});
    const Datagram question = receiveFrom(*server);
    ASSERT_EQ(question.received.outcome, Outcome::received);
    EXPECT_EQ(question.content, "question");
    EXPECT_EQ(question.received.source.address, loopback);
    EXPECT_NE(question.received.source.port, 0);

    server->send(bytesOf("answer"), question.received.source);
    const Datagram answer = receiveFrom(*client);
    ASSERT_EQ(answer.received.outcome, Outcome::received);
    EXPECT_EQ(answer.content, "answer");
    EXPECT_EQ(answer.received.source, (Endpoint{loopback, port}));
}

TEST(DatagramSocketTest, EachDatagramComesAloneAndCutToTheBuffer)
{
    const auto server = DatagramSocket::bound(port, longTime);
    const auto client = DatagramSocket::unbound(longTime);
    const QByteArray large(60000, 'l');
    for (const QByteArray& content :
        {QByteArray(), QByteArray("0123456789"), large, QByteArray("end")}) {
        client->send(bytesOf(content), {loopback, port});
    }
    for (const QByteArray& expected :
        {QByteArray(), QByteArray("0123456789"), large.first(10), QByteArray("end")}) {
        const Datagram datagram = receiveFrom(*server, 10);
        EXPECT_EQ(datagram.received.outcome, Outcome::received);
        EXPECT_EQ(datagram.content, expected);
        EXPECT_NE(datagram.received.source.port, 0);
    }
}

TEST(DatagramSocketTest, WaitsAsLongAsTold)
{
    struct Case {
        Duration timeout;
        Duration least;
    };
    for (const Case& c : {Case{-1s, 0s}, Case{0s, 0s}, Case{1500us, 1500us}, Case{60ms, 60ms}}) {
        const auto socket = DatagramSocket::unbound(c.timeout);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(receiveFrom(*socket).received.outcome, Outcome::timedOut);
        const auto waited = std::chrono::steady_clock::now() - start;
        EXPECT_GE(waited, c.least);
        EXPECT_LT(waited, 10s);
    }
}

TEST(DatagramSocketTest, CloseWakesTheWaitingReceiver)
{
    for (const auto& socket :
        {DatagramSocket::bound(port, longTime), DatagramSocket::unbound(longTime)}) {
        // With delays around the moment in which the receiver begins to wait.
        for (const auto delay : {0us, 20us, 100us, 20000us}) {
            const auto start = std::chrono::steady_clock::now();
            auto outcome = Outcome::failed;
            std::thread receiver([&] { outcome = receiveFrom(*socket).received.outcome; });
            std::this_thread::sleep_for(delay);
            socket->close();
            receiver.join();
            EXPECT_EQ(outcome, Outcome::closed);
            EXPECT_LT(std::chrono::steady_clock::now() - start, longTime / 4);
        }
    }
}

TEST(DatagramSocketTest, ClosedSocketGivesNothingMore)
{
    const auto server = DatagramSocket::bound(port, longTime);
    DatagramSocket::unbound(longTime)->send(bytesOf("late"), {loopback, port});
    server->close();
    server->close();
    EXPECT_EQ(receiveFrom(*server).received.outcome, Outcome::closed);
    EXPECT_EQ(receiveFrom(*server).received.outcome, Outcome::closed);
}

TEST(DatagramSocketTest, UndeliveredDatagramsAreNoFailure)
{
    const auto socket = DatagramSocket::unbound(50ms);
    // Nobody listens there: the system answers with "port unreachable".
    socket->send(bytesOf("x"), {loopback, port});
    EXPECT_EQ(receiveFrom(*socket).received.outcome, Outcome::timedOut);
    // Longer than any datagram.
    socket->send(bytesOf(QByteArray(70000, 'x')), {loopback, port});
    socket->send(bytesOf("x"), {0, 0});
    EXPECT_EQ(receiveFrom(*socket).received.outcome, Outcome::timedOut);
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
        static_cast<void>(DatagramSocket::bound(port, longTime));
    } catch (const std::system_error& error) {
        return error.code();
    }
    return {};
}

TEST(DatagramSocketTest, SharesThePortWithOtherPrograms)
{
    for (const int option : {SO_REUSEADDR, SO_REUSEPORT}) {
        const OtherSocket other(option);
        EXPECT_FALSE(errorOfBinding()) << option;
    }
}

TEST(DatagramSocketTest, BindingFailsWithTheReasonOfTheSystem)
{
    {
        const OtherSocket other(std::nullopt);
        EXPECT_EQ(errorOfBinding(), std::errc::address_in_use);
    }
    EXPECT_FALSE(errorOfBinding());
}

} // namespace
} // namespace platform
