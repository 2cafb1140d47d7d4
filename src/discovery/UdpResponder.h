#pragma once

#include "core/Service.h"
#include "platform/DatagramSocket.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

namespace ferrylane {

/// Answers phones that look for this computer: each discovery request that comes while the computer
/// is visible gets a reply with the device's name and the service's TCP port, as far as the
/// ReplyBudget goes. Everything else is dropped without a word. It has a thread of its own while it
/// runs; its operations belong to one thread.
class UdpResponder {
public:
    explicit UdpResponder(std::uint16_t tcpPort = port) : tcpPort_(tcpPort) {}
    ~UdpResponder() { stop(); }
    UdpResponder(const UdpResponder&) = delete;
    UdpResponder& operator=(const UdpResponder&) = delete;

    /// Opens UDP port 8789 and answers from now on. Throws std::system_error when the port cannot
    /// be opened; a responder that runs already then goes on, otherwise this one takes its place.
    /// When receiving fails later, it is silent until it is started again.
    void start();
    /// Takes no longer than the answer that is being given: when it returns, the port is free. Does
    /// nothing when there is nothing to stop.
    void stop();
    /// While not visible it listens on and stays silent. Visible at first.
    void setVisible(bool visible) { isVisible_ = visible; }

private:
    void receiveLoop(platform::DatagramSocket& socket) const;

    std::uint16_t tcpPort_;
    std::atomic<bool> isVisible_ = true;
    std::unique_ptr<platform::DatagramSocket> discoverySocket_;
    std::thread thread_;
};

} // namespace ferrylane
