#include "discovery/UdpResponder.h"

#include "core/Log.h"
#include "discovery/ReplyBudget.h"
#include "protocol/DiscoveryProtocol.h"

#include <array>
#include <utility>

namespace ferrylane {

UdpResponder::UdpResponder(
    std::function<bool()> isVisible, std::function<QString()> deviceName, std::uint16_t tcpPort)
    : isVisible_(std::move(isVisible)), deviceName_(std::move(deviceName)), tcpPort_(tcpPort)
{
}

UdpResponder::~UdpResponder()
{
    stop();
}

void UdpResponder::start()
{
    auto socket = platform::DatagramSocket::bound(discoveryPort, std::chrono::seconds(1));
    auto queue = std::make_unique<platform::ThreadQueue>("ferrylane.discovery");
    // Two sockets on one port would share the requests between them.
    stop();

    const std::int64_t generation = ++discoveryResponderGeneration_;
    discoverySocket_ = socket;
    discoveryQueue_ = std::move(queue);
    flLog(QStringLiteral("UDP discovery responder ready on %1 (POSIX broadcast-safe)")
              .arg(discoveryPort));
    discoveryQueue_->async(
        [this, socket = std::move(socket), generation] { receiveLoop(*socket, generation); });
}

void UdpResponder::stop()
{
    ++discoveryResponderGeneration_;
    if (const auto socket = std::exchange(discoverySocket_, nullptr)) socket->close();
    discoveryQueue_.reset();
}

void UdpResponder::receiveLoop(platform::DatagramSocket& socket, std::int64_t generation) const
{
    using Outcome = platform::DatagramSocket::Outcome;
    const platform::SteadyClock clock;
    ReplyBudget budget;
    std::array<std::byte, maximumDiscoveryBytes> buffer{};
    while (discoveryResponderGeneration_ == generation) {
        const auto received = socket.receive(buffer);
        if (received.outcome == Outcome::closed || received.outcome == Outcome::failed) return;
        if (received.outcome != Outcome::received) continue;
        if (!isToBeAnswered(platform::ByteView(buffer).first(received.length))) continue;
        if (!budget.spend(received.source.address, clock.now())) continue;
        socket.send(platform::bytesOf(discoveryReply(deviceName_(), tcpPort_)), received.source);
    }
}

bool UdpResponder::isToBeAnswered(platform::ByteView datagram) const
{
    return isVisible_() && isDiscoveryRequest(datagram);
}

} // namespace ferrylane
