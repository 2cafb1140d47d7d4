#include "discovery/UdpScanner.h"

#include <array>
#include <map>
#include <system_error>

namespace ferrylane {

namespace {

std::unique_ptr<platform::DatagramSocket> openSocket()
{
    try {
        return platform::DatagramSocket::unbound();
    } catch (const std::system_error&) {
        // The next scan, in a few seconds, tries again.
        return nullptr;
    }
}

} // namespace

Scan scanUDP(const std::stop_token& stop, const ScanRules& rules)
{
    using Outcome = platform::DatagramSocket::Outcome;
    Scan scan;
    const auto socket = openSocket();
    if (!socket) return scan;
    const std::stop_callback cutShort(stop, [&] { socket->close(); });
    socket->send(platform::bytesOf(discoveryRequest.toByteArray()), rules.to);

    const platform::SteadyClock clock;
    const platform::TimePoint end = clock.now() + rules.maximumLength;
    std::array<std::byte, maximumDiscoveryBytes> buffer{};
    std::map<std::uint32_t, int> repliesOf;
    bool hasHeardAll = true;
    scan.outcome = Scan::Outcome::cutShort;
    while (scan.replies.size() < ScanRules::maximumReplies && clock.now() < end) {
        const auto received = socket->receive(buffer, rules.silence);
        if (stop.stop_requested()) break;
        if (received.outcome == Outcome::timedOut && hasHeardAll) {
            scan.outcome = Scan::Outcome::complete;
        }
        if (received.outcome != Outcome::received || received.length == 0) break;

        const auto device = parseDiscoveryReply(platform::ByteView(buffer).first(received.length));
        if (!device) continue;
        if (++repliesOf[received.source.address] > ScanRules::maximumRepliesOfOneHost) {
            // Somebody may have sent the first ones under this host's address.
            hasHeardAll = false;
            continue;
        }
        scan.replies.push_back({*device, received.source, clock.now()});
    }
    return scan;
}

} // namespace ferrylane
