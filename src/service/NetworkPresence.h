#pragma once

#include "discovery/UdpResponder.h"
#include "platform/DnsSd.h"

namespace ferrylane {

/// How a receiver service shows itself to the network: it answers discovery requests over UDP, and
/// is announced by DNS-SD. Main thread.
class NetworkPresence {
public:
    explicit NetworkPresence(std::uint16_t tcpPort = port);

    /// Answers discovery requests from now on. Throws std::system_error when UDP port 8789 cannot
    /// be opened.
    void start() { responder_.start(); }
    void stop() { responder_.stop(); }
    /// While not visible, requests are not answered.
    void setVisible(bool visible) { responder_.setVisible(visible); }

    void announce(const QString& name);
    void withdraw() { publisher_.withdraw(); }

    /// Knows the name under which DNS-SD shows this service.
    [[nodiscard]] const platform::ServicePublisher& publisher() const { return publisher_; }

private:
    std::uint16_t tcpPort_;
    platform::ServicePublisher publisher_;
    UdpResponder responder_;
};

} // namespace ferrylane
