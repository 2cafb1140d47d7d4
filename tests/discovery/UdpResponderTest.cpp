#include "discovery/UdpResponder.h"

#include "core/StoragePaths.h"
#include "platform/Files.h"
#include "protocol/DiscoveryProtocol.h"
#include "support/PrivateUserFolders.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <system_error>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace ferrylane;
using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t thisComputer = 0x7F000001;

const QByteArray request = discoveryRequest.toByteArray();

/// A socket that holds the discovery port for itself.
class PortHolder {
public:
    PortHolder() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(discoveryPort);
        holds_ = ::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~PortHolder() { ::close(socket_); }
    PortHolder(const PortHolder&) = delete;
    PortHolder& operator=(const PortHolder&) = delete;

    [[nodiscard]] bool holds() const { return holds_; }

private:
    int socket_;
    bool holds_ = false;
};

class UdpResponderTest : public testing::Test {
protected:
    void ask(const QByteArray& datagram) const
    {
        phone_->send(platform::bytesOf(datagram), {thisComputer, discoveryPort});
    }

    /// The next reply; empty when none has come within the phone's patience.
    QByteArray reply() const
    {
        std::array<std::byte, 1024> buffer{};
        const auto received = phone_->receive(buffer);
        if (received.outcome != platform::DatagramSocket::Outcome::received) return {};
        EXPECT_EQ(received.source.port, discoveryPort);
        return platform::toByteArray(platform::ByteView(buffer).first(received.length));
    }

    /// Whether the very next reply is the one to this: those before it have had none.
    bool answersNext()
    {
        const int number = ++asked_;
        ask(request);
        return reply()
            == "FERRYLANE_HERE_V1|K\xc3\xbc\x63he " + QByteArray::number(number) + "|8788";
    }

    support::PrivateUserFolders home_;
    std::shared_ptr<platform::DatagramSocket> phone_
        = platform::DatagramSocket::unbound(support::patience);
    std::atomic<bool> visible_ = true;
    std::atomic<int> visibleCalls_ = 0;
    std::atomic<int> nameCalls_ = 0;
    std::atomic<int> asked_ = 0;
    UdpResponder responder_{[this] { return isVisible(); }, [this] { return deviceName(); }};

private:
    bool isVisible()
    {
        const bool visible = visible_;
        ++visibleCalls_;
        return visible;
    }

    QString deviceName()
    {
        ++nameCalls_;
        return QStringLiteral("K\u00fcche|%1").arg(asked_.load());
    }
};

} // namespace

TEST_F(UdpResponderTest, isSilentWhileInvisibleAndListensOn)
{
    responder_.start();
    visible_ = false;
    ask(request);
    ask(request);
    ASSERT_TRUE(support::waitUntil([this] { return visibleCalls_ == 2; }));

    visible_ = true;
    EXPECT_TRUE(answersNext());
    EXPECT_EQ(nameCalls_, 1);
}

TEST_F(UdpResponderTest, stopsAtOnceAndForGood)
{
    responder_.start();
    ASSERT_TRUE(answersNext());

    const auto start = std::chrono::steady_clock::now();
    responder_.stop();
    // Well below the second that a receive waits.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 500ms);
    EXPECT_TRUE(PortHolder().holds()) << "the port is free";

    phone_ = platform::DatagramSocket::unbound(100ms);
    ask(request);
    EXPECT_EQ(reply(), QByteArray());
    EXPECT_EQ(nameCalls_, 1);
    responder_.stop();
}

TEST_F(UdpResponderTest, endsWithItsObject)
{
    std::atomic<int> calls = 0;
    for (int i = 0; i < 20; ++i) {
        UdpResponder responder([] { return true; },
            [&] {
                ++calls;
                return QString();
            });
        responder.start();
        ask(request);
    }
    const int callsThen = calls;
    ASSERT_TRUE(PortHolder().holds());
    ask(request);
    EXPECT_EQ(calls, callsThen);
}

TEST_F(UdpResponderTest, saysWhyThePortCannotBeHad)
{
    const auto startError = [this] {
        try {
            responder_.start();
        } catch (const std::system_error& error) {
            return error.code();
        }
        return std::error_code();
    };
    {
        const PortHolder holder;
        ASSERT_TRUE(holder.holds());
        EXPECT_EQ(startError(), std::errc::address_in_use);
        EXPECT_FALSE(platform::itemExists(logFolder())) << "nothing is logged here";
    }
    EXPECT_EQ(startError(), std::error_code());
    EXPECT_TRUE(answersNext());
}
