#pragma once

#include "platform/ServiceBrowser.h"
#include "platform/linux/AvahiSession.h"
#include "platform/linux/HandlerGate.h"

#include <set>
#include <tuple>

#include <avahi-client/lookup.h>

namespace platform {

/// Looks for the services of one type for a ServiceBrowser. Used on the loop's thread only, but for
/// silence().
class AvahiFinder final : AvahiSession::User {
public:
    AvahiFinder(AvahiLoop& loop, const QString& type, ServiceBrowser::ResultsHandler onResults,
        ServiceBrowser::FailureHandler onFailure, Duration retryInterval);

    void start() { session_.open(); }
    void stop() { session_.close(); }
    /// When this returns, no handler runs or will run. Any thread.
    void silence() { gate_.close(); }

private:
    /// One service is found once for every interface and protocol that it can be reached by.
    struct Finding {
        QString name;
        QString domain;
        AvahiIfIndex interface = AVAHI_IF_UNSPEC;
        AvahiProtocol protocol = AVAHI_PROTO_UNSPEC;

        bool operator<(const Finding& other) const
        {
            return std::tie(name, domain, interface, protocol)
                < std::tie(other.name, other.domain, other.interface, other.protocol);
        }
    };

    void daemonIsReady(AvahiClient* client) override;
    void clientIsGone() override;
    void daemonIsLost(const QString& reason) override;

    static void found(AvahiServiceBrowser* browser, AvahiIfIndex interface, AvahiProtocol protocol,
        AvahiBrowserEvent event, const char* name, const char* type, const char* domain,
        AvahiLookupResultFlags flags, void* finder);
    void handle(AvahiBrowserEvent event, const Finding& finding);
    void reportNames();

    HandlerGate gate_;
    QByteArray type_;
    ServiceBrowser::ResultsHandler onResults_;
    ServiceBrowser::FailureHandler onFailure_;

    std::set<Finding> findings_;
    QStringList reportedNames_;
    AvahiServiceBrowser* browser_ = nullptr; ///< the client's
    AvahiSession session_;
};

} // namespace platform
