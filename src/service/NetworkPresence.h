#pragma once

#include "core/Service.h"
#include "discovery/UdpResponder.h"
#include "platform/ServicePublisher.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace ferrylane {

/// How a receiver service shows itself to the network: it answers discovery requests over UDP, and
/// is announced by DNS-SD.
class NetworkPresence {
public:
    explicit NetworkPresence(std::uint16_t tcpPort = port);

    void start() { responder_.start(); }
    void stop() { responder_.stop(); }
    void setVisible(bool visible) { visible_ = visible; }

    void announce(const QString& name);
    void withdraw() { publisher_->withdraw(); }

    /// The name under which DNS-SD shows this service.
    [[nodiscard]] std::shared_ptr<const platform::AnnouncedName> announcedName() const
    {
        return publisher_->announcedName();
    }

private:
    std::uint16_t tcpPort_;
    std::atomic<bool> visible_ = true;
    UdpResponder responder_;
    std::unique_ptr<platform::ServicePublisher> publisher_;
};

} // namespace ferrylane
