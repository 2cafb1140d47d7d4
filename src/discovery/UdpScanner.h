#pragma once

#include "platform/Clock.h"
#include "platform/DatagramSocket.h"
#include "protocol/DiscoveryProtocol.h"

#include <stop_token>
#include <vector>

namespace ferrylane {

/// What one look at the local network has found.
struct Scan {
    enum class Outcome {
        notAsked, ///< there was no socket to be had
        cutShort, ///< perhaps not everybody who answered has been heard
        complete,
    };
    struct Reply {
        DiscoveryReply device;
        platform::Endpoint source;
        platform::TimePoint time;
    };

    Outcome outcome = Outcome::notAsked;
    std::vector<Reply> replies;
};

struct ScanRules {
    static constexpr std::size_t maximumReplies = 256;
    static constexpr int maximumRepliesOfOneHost = 8;

    /// Who is asked: everyone on the local network.
    platform::Endpoint to{0xFFFFFFFF, discoveryPort};
    platform::Duration silence = std::chrono::milliseconds(1200);
    platform::Duration maximumLength = std::chrono::seconds(10);
};

/// Asks once by UDP broadcast, from a socket of its own, and waits for replies until none has come
/// for `silence`. Any datagram makes it wait anew, but an empty one ends it, as does an error or a
/// stop. Whatever a hostile network sends, a scan ends after ten seconds or 256 replies, of which
/// no host has more than eight. It is complete only when silence has ended it and no host had more
/// replies than are read. A network that cannot be asked, such as one without a route, counts as
/// one where nobody answers.
[[nodiscard]] Scan scanUDP(const std::stop_token& stop, const ScanRules& rules = {});

} // namespace ferrylane
