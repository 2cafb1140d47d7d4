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

DiscoveryScanner::Outcome UdpScanner::scan(const ReplyHandler& onReply, const std::stop_token& stop)
{
    const auto socket = openSocket();
    if (!socket) return Outcome::notAsked;

    const std::stop_callback cutShort(stop, [&] { socket->close(); });
    socket->send(platform::bytesOf(discoveryRequest.toByteArray()), to_);
    return collect(*socket, onReply, stop);
}

DiscoveryScanner::Outcome UdpScanner::collect(platform::DatagramSocket& socket,
    const ReplyHandler& onReply, const std::stop_token& stop) const
{
    using Received = platform::DatagramSocket::Outcome;
    const platform::TimePoint end = clock_.now() + maximumLength;
    std::array<std::byte, maximumDiscoveryBytes> buffer{};
    std::map<std::uint32_t, int> repliesOf;
    auto quietEnd = Outcome::complete;
    for (int replies = 0; replies < maximumReplies && clock_.now() < end;) {
        const auto received = socket.receive(buffer);
        if (stop.stop_requested()) return Outcome::cutShort;
        if (received.outcome == Received::timedOut) return quietEnd;
        if (received.outcome != Received::received || received.length == 0) break;

        const auto reply = parseDiscoveryReply(platform::ByteView(buffer).first(received.length));
        if (!reply) continue;
        if (++repliesOf[received.source.address] > maximumRepliesOfOneHost) {
            // Somebody may have sent the first ones under this host's address.
            quietEnd = Outcome::cutShort;
            continue;
        }
        onReply(*reply, received.source);
        ++replies;
    }
    return Outcome::cutShort;
}

} // namespace ferrylane
