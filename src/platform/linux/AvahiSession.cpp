#include "platform/linux/AvahiSession.h"

#include <avahi-common/error.h>

namespace platform {

AvahiSession::AvahiSession(AvahiLoop& loop, User& user, Duration retryInterval)
    : loop_(loop), user_(user), retryInterval_(retryInterval)
{
}

void AvahiSession::open()
{
    if (isOpen_) return;
    isOpen_ = true;
    connect();
}

void AvahiSession::close()
{
    isOpen_ = false;
    loop_.cancelWake(this);
    user_.clientIsGone();
    client_.reset();
}

bool AvahiSession::confirm()
{
    return std::exchange(isLost_, false);
}

void AvahiSession::fail(int avahiError)
{
    if (std::exchange(hasFailed_, true)) return;
    user_.clientIsGone();
    reportLoss(avahiError);
    // This may be one of the client's own calls, and so is no time to free it.
    loop_.async([this] { dropFailedClient(); });
    loop_.wakeAfter(this, retryInterval_, [this] { connect(); });
}

void AvahiSession::connect()
{
    client_.reset();
    hasFailed_ = false;
    int error = AVAHI_ERR_OS;
    // Without a daemon the client waits for one. It fails without a bus, and when the daemon goes.
    if (const AvahiPoll* const poll = loop_.poll()) {
        client_.reset(avahi_client_new(poll, AVAHI_CLIENT_NO_FAIL, clientChanged, this, &error));
    }
    if (!client_) fail(error);
}

void AvahiSession::dropFailedClient()
{
    if (hasFailed_) client_.reset();
}

// Comes for the first time before avahi_client_new() returns.
void AvahiSession::clientChanged(AvahiClient* client, AvahiClientState state, void* session)
{
    AvahiLoop::attempt([&] { static_cast<AvahiSession*>(session)->handle(client, state); });
}

void AvahiSession::handle(AvahiClient* client, AvahiClientState state)
{
    if (hasFailed_) return;
    switch (state) {
    case AVAHI_CLIENT_S_RUNNING:
        user_.daemonIsReady(client);
        break;
    case AVAHI_CLIENT_S_REGISTERING:
    case AVAHI_CLIENT_S_COLLISION:
        user_.hostNameChanges();
        break;
    case AVAHI_CLIENT_CONNECTING:
        reportLoss(AVAHI_ERR_NO_DAEMON);
        break;
    case AVAHI_CLIENT_FAILURE:
        fail(avahi_client_errno(client));
        break;
    }
}

void AvahiSession::reportLoss(int avahiError)
{
    if (std::exchange(isLost_, true)) return;
    user_.daemonIsLost(QString::fromUtf8(avahi_strerror(avahiError)));
}

} // namespace platform
