#include "discovery/UdpResponder.h"

#include "core/DeviceName.h"
#include "core/StoragePaths.h"
#include "protocol/DiscoveryProtocol.h"
#include "support/PrivateUserFolders.h"
#include "support/Waiting.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <array>
#include <system_error>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace ferrylane;
using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t loopback = 0x7F000001;

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
    void ask() const
    {
        phone_->send(platform::bytesOf(discoveryRequest.toByteArray()), {loopback, discoveryPort});
    }

    bool isAnswered(platform::Duration within = support::patience) const
    {
        std::array<std::byte, 1024> buffer{};
        const auto received = phone_->receive(buffer, within);
        if (received.outcome != platform::DatagramSocket::Outcome::received) return false;
        EXPECT_EQ(received.source.port, discoveryPort);
        EXPECT_EQ(platform::toByteArray(platform::ByteView(buffer).first(received.length)),
            discoveryReply(ferrylaneDeviceSuffix(), 1234));
        return true;
    }

    support::PrivateUserFolders home_;
    std::unique_ptr<platform::DatagramSocket> phone_ = platform::DatagramSocket::unbound();
    UdpResponder responder_{1234};
};

} // namespace

TEST_F(UdpResponderTest, isSilentWhileInvisibleAndListensOn)
{
    responder_.start();
    ask();
    EXPECT_TRUE(isAnswered());
    responder_.setVisible(false);
    ask();
    EXPECT_FALSE(isAnswered(200ms));
    responder_.setVisible(true);
    ask();
    EXPECT_TRUE(isAnswered());
    EXPECT_FALSE(isAnswered(50ms)) << "only those that come while visible";
}

TEST_F(UdpResponderTest, stopsAtOnceAndForGood)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) {
        responder_.start();
        if (i % 3 == 0) responder_.start();
        ask();
        if (i % 2 == 0) {
            ASSERT_TRUE(isAnswered());
        }
        responder_.stop();
        EXPECT_TRUE(PortHolder().holds()) << "the port is free";
        phone_ = platform::DatagramSocket::unbound();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    ask();
    EXPECT_FALSE(isAnswered(50ms));
    responder_.stop();
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
        EXPECT_FALSE(QFileInfo::exists(logFolder())) << "nothing is logged here";
    }
    EXPECT_EQ(startError(), std::error_code());
    ask();
    EXPECT_TRUE(isAnswered());
}
