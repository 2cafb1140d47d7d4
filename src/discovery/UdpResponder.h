#pragma once

#include "core/Service.h"
#include "platform/DatagramSocket.h"
#include "platform/ThreadQueue.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace ferrylane {

/// Answers phones that look for this computer: each discovery request that comes while the computer
/// is visible gets a reply with the device's name and the service's TCP port, as far as the
/// ReplyBudget goes. Everything else is dropped without a word.
///
/// start(), stop() and the destructor belong to one thread. The two functions are called on the
/// responder's own thread, at every request; they must not wait for that of stop().
class UdpResponder {
public:
    UdpResponder(std::function<bool()> isVisible, std::function<QString()> deviceName,
        std::uint16_t tcpPort = port);
    ~UdpResponder();
    UdpResponder(const UdpResponder&) = delete;
    UdpResponder& operator=(const UdpResponder&) = delete;

    /// Opens UDP port 8789 and answers from now on. Throws std::system_error when the port cannot
    /// be opened; a responder that runs already then goes on, otherwise this one takes its place.
    /// When receiving fails later, it is silent until it is started again.
    void start();

    /// Takes no longer than the answer that is being given: when it returns, the port is free and
    /// neither function is called any more. Does nothing when there is nothing to stop.
    void stop();

private:
    void receiveLoop(platform::DatagramSocket& socket, std::int64_t generation) const;
    [[nodiscard]] bool isToBeAnswered(platform::ByteView datagram) const;

    std::function<bool()> isVisible_;
    std::function<QString()> deviceName_;
    std::uint16_t tcpPort_;
    std::shared_ptr<platform::DatagramSocket> discoverySocket_;
    /// Moves on at every start and stop; a loop runs only while it is the one of its own start.
    std::atomic<std::int64_t> discoveryResponderGeneration_ = 0;
    /// Has the loop while there is one. Its destructor waits for it, so the loop never outlives
    /// this.
    std::unique_ptr<platform::ThreadQueue> discoveryQueue_;
};

} // namespace ferrylane
