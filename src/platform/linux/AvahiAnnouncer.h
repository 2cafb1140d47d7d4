#pragma once

#include "platform/ServicePublisher.h"
#include "platform/linux/AvahiSession.h"
#include "platform/linux/HandlerGate.h"

#include <avahi-client/publish.h>

namespace platform {

/// Announces one service for a ServicePublisher. Used on the loop's thread only, but for silence().
class AvahiAnnouncer final : AvahiSession::User {
public:
    struct Service {
        QString name;
        QString type;
        std::uint16_t port = 0;
    };

    AvahiAnnouncer(AvahiLoop& loop, ServicePublisher::LogHandler log,
        std::shared_ptr<AnnouncedName> announcedName, Duration retryInterval);

    /// In place of what was announced before.
    void announce(const Service& service);
    /// Leaves the daemon alone until the next announce().
    void withdraw();
    /// When this returns, the log handler neither runs nor will run. Any thread.
    void silence() { gate_.close(); }

private:
    void daemonIsReady(AvahiClient* client) override;
    void hostNameChanges() override;
    void clientIsGone() override;
    void daemonIsLost(const QString& reason) override;

    static void groupChanged(AvahiEntryGroup* group, AvahiEntryGroupState state, void* announcer);
    void handle(AvahiEntryGroupState state);
    void registerService();
    [[nodiscard]] int prepareGroup();
    [[nodiscard]] int addService();
    void refuse(int avahiError);
    void established();
    void log(const QString& line);

    HandlerGate gate_;
    ServicePublisher::LogHandler log_;
    std::shared_ptr<AnnouncedName> announcedName_;

    QByteArray wantedName_;
    QByteArray type_;
    std::uint16_t port_ = 0;
    QByteArray name_;     ///< wantedName_, or an alternative to it
    QByteArray toldName_; ///< what the log's reader takes for the announced name

    AvahiClient* client_ = nullptr;    ///< while the daemon takes orders
    AvahiEntryGroup* group_ = nullptr; ///< the client's; what is announced
    AvahiSession session_;
};

} // namespace platform
