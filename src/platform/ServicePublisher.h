#pragma once

#include "platform/AnnouncedName.h"
#include "platform/Clock.h"
#include "platform/Interface.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

/// Announces one DNS-SD service (RFC 6763) of this computer on the local network, by the system's
/// own DNS-SD daemon. While that cannot be reached, what is to be announced is kept, and announced
/// as soon as the daemon is there.
///
/// Every operation may be called from any thread and returns at once, even if the daemon hangs.
class ServicePublisher : public Interface {
public:
    /// Gets one line for every change worth telling (daemon missing, back, name taken, nothing that
    /// can be announced), on the publisher's own thread, or in publish() when there is no thread to
    /// be had; the next publish() tries again then.
    using LogHandler = std::function<void(const QString& line)>;
    static constexpr Duration usualRetryInterval = std::chrono::seconds(2);

    /// `retryInterval` is the pause between two attempts to reach the daemon.
    [[nodiscard]] static std::unique_ptr<ServicePublisher> create(
        LogHandler log, Duration retryInterval = usualRetryInterval);

    /// Withdraws. When it returns, the log handler neither runs nor will run. Not to be called from
    /// the log handler.
    ~ServicePublisher() override = default;

    /// Announces the instance `name` of `type` ("_http._tcp") at the TCP port `port` of this
    /// computer in the default domain, without a TXT record, in place of what was announced before.
    ///
    /// The name loses its control characters and is cut to the 63 bytes of UTF-8 that DNS-SD has
    /// room for (section 4.1.1); if it is taken, "name #2" and so on is announced.
    virtual void publish(const QString& name, const QString& type, std::uint16_t port) = 0;
    virtual void withdraw() = 0;

    /// What a browser is given that must not find the service.
    [[nodiscard]] virtual std::shared_ptr<const AnnouncedName> announcedName() const = 0;
};

} // namespace platform
