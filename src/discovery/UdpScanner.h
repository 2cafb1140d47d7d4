#pragma once

#include "discovery/DiscoveryScanner.h"
#include "platform/Clock.h"

namespace ferrylane {

/// Scans by UDP broadcast: sends one request from a socket of its own, and waits for replies until
/// none has come for 1.2 seconds. Any datagram makes it wait anew, but an empty one ends it, as
/// does an error. Whatever a hostile network sends, a scan ends after ten seconds or 256 replies,
/// of which no host has more than eight, and keeps nothing. A network that cannot be asked, such as
/// one without a route, counts as one where nobody answers.
class UdpScanner final : public DiscoveryScanner {
public:
    static constexpr platform::Duration silence = std::chrono::milliseconds(1200);
    static constexpr platform::Duration maximumLength = std::chrono::seconds(10);
    static constexpr int maximumReplies = 256;
    static constexpr int maximumRepliesOfOneHost = 8;
    /// Everyone on the local network.
    static constexpr platform::Endpoint everyone{0xFFFFFFFF, discoveryPort};

    /// `clock` must outlive this. `to` is who is asked.
    explicit UdpScanner(const platform::Clock& clock, const platform::Endpoint& to = everyone)
        : clock_(clock), to_(to)
    {
    }

    /// Outcome::notAsked when there is no socket to be had, Outcome::complete only when silence has
    /// ended it and no host had more replies than are read.
    Outcome scan(const ReplyHandler& onReply, const std::stop_token& stop) override;

private:
    [[nodiscard]] Outcome collect(platform::DatagramSocket& socket, const ReplyHandler& onReply,
        const std::stop_token& stop) const;

    const platform::Clock& clock_;
    platform::Endpoint to_;
};

} // namespace ferrylane
