#pragma once

#include "platform/Interface.h"
#include "platform/linux/AvahiLoop.h"

#include <QString>

#include <memory>

#include <avahi-client/client.h>

namespace platform {

/// A connection to the Avahi daemon that comes back by itself, whatever is missing or goes: the
/// bus, the daemon or what the daemon was asked to do. Used on the loop's thread only; closed
/// before it is destroyed.
class AvahiSession {
public:
    /// Who works with the daemon. Called on the loop's thread.
    class User : public Interface {
    public:
        /// The daemon takes orders. Comes again after the host's name has changed.
        virtual void daemonIsReady(AvahiClient* client) = 0;
        /// What names this host must not be announced until daemonIsReady() comes.
        virtual void hostNameChanges() {}
        /// All that was made with the client is gone or about to go, and not to be touched again.
        virtual void clientIsGone() = 0;
        /// Once for each loss, that is until confirm(), and after clientIsGone().
        virtual void daemonIsLost(const QString& reason) = 0;
    };

    /// Tries again to reach the daemon every `retryInterval`.
    AvahiSession(AvahiLoop& loop, User& user, Duration retryInterval);
    ~AvahiSession() = default;
    AvahiSession(const AvahiSession&) = delete;
    AvahiSession& operator=(const AvahiSession&) = delete;

    /// Connects; does nothing when it is open.
    void open();
    /// Gives up the connection, and with it all that was made with its client.
    void close();

    /// The daemon has done its work. True if it had been lost before.
    bool confirm();
    /// The daemon has not, says `avahiError`: it counts as lost, and the session connects anew.
    void fail(int avahiError);

private:
    struct FreeClient {
        void operator()(AvahiClient* client) const { avahi_client_free(client); }
    };

    static void clientChanged(AvahiClient* client, AvahiClientState state, void* session);
    void handle(AvahiClient* client, AvahiClientState state);
    void connect();
    void dropFailedClient();
    void reportLoss(int avahiError);

    AvahiLoop& loop_;
    User& user_;
    Duration retryInterval_;
    std::unique_ptr<AvahiClient, FreeClient> client_;
    bool isOpen_ = false;
    bool hasFailed_ = false; ///< the client is of no use any more
    bool isLost_ = false;    ///< reported and not confirmed since
};

} // namespace platform
