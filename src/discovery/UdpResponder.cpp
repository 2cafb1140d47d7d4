#include "discovery/UdpResponder.h"

#include "core/DeviceName.h"
#include "core/Log.h"
#include "discovery/ReplyBudget.h"
#include "platform/ThreadName.h"
#include "protocol/DiscoveryProtocol.h"

#include <array>
#include <utility>

namespace ferrylane {

void UdpResponder::start()
{
    auto socket = platform::DatagramSocket::bound(discoveryPort);
    std::thread thread([this, opened = socket.get()] { receiveLoop(*opened); });
    // Two sockets on one port would share the requests between them.
    stop();
    discoverySocket_ = std::move(socket);
    thread_ = std::move(thread);
    flLog(QStringLiteral("UDP discovery responder ready on %1 (POSIX broadcast-safe)")
              .arg(discoveryPort));
}

void UdpResponder::stop()
{
    if (!discoverySocket_) return;
    discoverySocket_->close();
    thread_.join();
    discoverySocket_.reset();
}

void UdpResponder::receiveLoop(platform::DatagramSocket& socket) const
{
    platform::setCurrentThreadName("ferrylane.discovery");
    using Outcome = platform::DatagramSocket::Outcome;
    const platform::SteadyClock clock;
    ReplyBudget budget;
    std::array<std::byte, maximumDiscoveryBytes> buffer{};
    while (true) {
        const auto received = socket.receive(buffer);
        if (received.outcome == Outcome::timedOut) continue;
        if (received.outcome != Outcome::received) return;
        if (!isVisible_ || !isDiscoveryRequest(platform::ByteView(buffer).first(received.length))) {
            continue;
        }
        if (!budget.spend(received.source.address, clock.now())) continue;
        const QByteArray reply = discoveryReply(ferrylaneDeviceSuffix(), tcpPort_);
        socket.send(platform::bytesOf(reply), received.source);
    }
}

} // namespace ferrylane
