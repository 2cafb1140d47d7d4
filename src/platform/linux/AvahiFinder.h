#pragma once

#include "platform/ServiceBrowser.h"
#include "platform/linux/AvahiSession.h"
#include "platform/linux/HandlerGate.h"

#include <map>
#include <set>
#include <tuple>

#include <avahi-client/lookup.h>

namespace platform {

/// Looks for the services of one type for a ServiceBrowser. Used on the loop's thread only, but for
/// silence().
class AvahiFinder final : AvahiSession::User {
public:
    struct Wanted {
        QByteArray type;
        std::shared_ptr<const AnnouncedName> notThis; ///< may be null
        ServiceBrowser::ResultsHandler onResults;
        ServiceBrowser::FailureHandler onFailure;
    };

    AvahiFinder(AvahiLoop& loop, Wanted wanted, Duration retryInterval);

    void start() { session_.open(); }
    void stop() { session_.close(); }
    /// When this returns, no handler runs or will run. Any thread.
    void silence() { gate_.close(); }

private:
    /// What is kept in mind of a crowd, so that some of it can take the place of who goes.
    static constexpr std::size_t maximumKnown = 4096;
    /// Changes within it are reported together.
    static constexpr Duration settlingTime = std::chrono::milliseconds(200);

    /// One service is found once for every interface and protocol that it can be reached by.
    using Place = std::tuple<QString, AvahiIfIndex, AvahiProtocol>; ///< the first is its domain
    struct Service {
        std::uint64_t order = 0; ///< in which they were found
        std::set<Place> places;
    };

    void daemonIsReady(AvahiClient* client) override;
    void clientIsGone() override;
    void daemonIsLost(const QString& reason) override;

    static void found(AvahiServiceBrowser* browser, AvahiIfIndex interface, AvahiProtocol protocol,
        AvahiBrowserEvent event, const char* name, const char* type, const char* domain,
        AvahiLookupResultFlags flags, void* finder);
    void handle(AvahiBrowserEvent event, const QString& name, const Place& place);
    void add(const QString& name, const Place& place);
    void remove(const QString& name, const Place& place);
    void reportSoon();
    void reportNames();
    [[nodiscard]] QStringList firstFound() const;

    HandlerGate gate_;
    AvahiLoop& loop_;
    Wanted wanted_;

    std::map<QString, Service> services_;
    std::uint64_t foundByNow_ = 0;
    bool isReportDue_ = false;
    QStringList reportedNames_;
    AvahiServiceBrowser* browser_ = nullptr; ///< the client's
    AvahiSession session_;
};

} // namespace platform
