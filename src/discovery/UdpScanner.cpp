#include "discovery/UdpScanner.h"

#include <array>
#include <map>
#include <system_error>

namespace ferrylane {

namespace {

std::shared_ptr<platform::DatagramSocket> openSocket()
{
    try {
        return platform::DatagramSocket::unbound(UdpScanner::silence);
    } catch (const std::system_error&) {
        // The next scan, in a few seconds, tries again.
        return nullptr;
    }
}

} // namespace

bool UdpScanner::scan(const ReplyHandler& onReply, const std::stop_token& stop)
{
    const auto socket = openSocket();
    if (!socket) return false;

    const std::stop_callback cutShort(stop, [&] { socket->close(); });
    socket->send(platform::bytesOf(discoveryRequest.toByteArray()), to_);
    collect(*socket, onReply, stop);
    return true;
}

void UdpScanner::collect(platform::DatagramSocket& socket, const ReplyHandler& onReply,
    const std::stop_token& stop) const
{
    using Outcome = platform::DatagramSocket::Outcome;
    const platform::TimePoint end = clock_.now() + maximumLength;
    std::array<std::byte, maximumDiscoveryBytes> buffer{};
    std::map<std::uint32_t, int> repliesOf;
    for (int replies = 0; replies < maximumReplies && clock_.now() < end;) {
        const auto received = socket.receive(buffer);
        if (received.outcome != Outcome::received || received.length == 0) return;
        if (stop.stop_requested()) return;

        const auto reply = parseDiscoveryReply(platform::ByteView(buffer).first(received.length));
        if (!reply || ++repliesOf[received.source.address] > maximumRepliesOfOneHost) continue;
        onReply(*reply, received.source);
        ++replies;
    }
}

} // namespace ferrylane
