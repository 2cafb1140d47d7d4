#pragma once

#include "discovery/UdpResponder.h"
#include "platform/ServicePublisher.h"
#include "receiver/HTTPServer.h"

#include <atomic>
#include <memory>

namespace ferrylane {

/// How a receiver service shows itself to the network: it answers discovery requests over UDP, and
/// is announced by DNS-SD. The service drives both; this must outlive it.
class NetworkPresence final : public HTTPServer::DiscoveryResponder, public HTTPServer::Advertiser {
public:
    explicit NetworkPresence(std::uint16_t tcpPort = port);

    void start() override { responder_.start(); }
    void stop() override { responder_.stop(); }
    void setVisible(bool visible) override { visible_ = visible; }

    void advertise(const QString& name) override;
    void withdraw() override { publisher_->withdraw(); }

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
