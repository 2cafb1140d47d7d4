#include "platform/linux/AvahiAnnouncer.h"

#include "platform/linux/AvahiServiceName.h"

#include <avahi-common/error.h>

namespace platform {

namespace {

/// The daemon would say the same again.
bool isFinal(int avahiError)
{
    switch (avahiError) {
    case AVAHI_ERR_INVALID_HOST_NAME: // said of a service's name with characters that are none
    case AVAHI_ERR_INVALID_SERVICE_NAME:
    case AVAHI_ERR_INVALID_SERVICE_TYPE:
    case AVAHI_ERR_INVALID_PORT:
    case AVAHI_ERR_INVALID_ARGUMENT:
    case AVAHI_ERR_ACCESS_DENIED:
    case AVAHI_ERR_NOT_PERMITTED:
        return true;
    default:
        return false;
    }
}

} // namespace

AvahiAnnouncer::AvahiAnnouncer(AvahiLoop& loop, ServicePublisher::LogHandler log,
    std::shared_ptr<AnnouncedName> announcedName, Duration retryInterval)
    : log_(std::move(log))
    , announcedName_(std::move(announcedName))
    , session_(loop, *this, retryInterval)
{
}

void AvahiAnnouncer::announce(const Service& service)
{
    wantedName_ = serviceName(service.name);
    type_ = service.type.toUtf8();
    port_ = service.port;
    name_ = wantedName_;
    toldName_ = wantedName_;
    // What the daemon still has to say of the service before must not be taken for news of this.
    if (group_ != nullptr) avahi_entry_group_free(std::exchange(group_, nullptr));
    if (client_ != nullptr) {
        registerService();
    } else {
        session_.open();
    }
}

void AvahiAnnouncer::withdraw()
{
    session_.close();
}

void AvahiAnnouncer::daemonIsReady(AvahiClient* client)
{
    client_ = client;
    // Whoever had the wanted name may have gone.
    name_ = wantedName_;
    registerService();
}

void AvahiAnnouncer::hostNameChanges()
{
    client_ = nullptr;
    if (group_ != nullptr) avahi_entry_group_reset(group_);
}

void AvahiAnnouncer::clientIsGone()
{
    client_ = nullptr;
    group_ = nullptr;
}

void AvahiAnnouncer::daemonIsLost(const QString& reason)
{
    log(QStringLiteral("DNS-SD is not available and waited for: ") + reason);
}

void AvahiAnnouncer::groupChanged(
    AvahiEntryGroup* group, AvahiEntryGroupState state, void* announcer)
{
    auto* const self = static_cast<AvahiAnnouncer*>(announcer);
    if (group != self->group_) return;
    AvahiLoop::attempt([&] { self->handle(state); });
}

void AvahiAnnouncer::handle(AvahiEntryGroupState state)
{
    switch (state) {
    case AVAHI_ENTRY_GROUP_ESTABLISHED:
        established();
        break;
    case AVAHI_ENTRY_GROUP_COLLISION: // with another computer
        if (client_ == nullptr) return;
        name_ = alternativeServiceName(name_);
        registerService();
        break;
    case AVAHI_ENTRY_GROUP_FAILURE:
        session_.fail(avahi_client_errno(avahi_entry_group_get_client(group_)));
        break;
    case AVAHI_ENTRY_GROUP_UNCOMMITED:
    case AVAHI_ENTRY_GROUP_REGISTERING:
        break;
    }
}

void AvahiAnnouncer::registerService()
{
    int result = prepareGroup();
    if (result == AVAHI_OK) result = addService();
    // With another program of this computer.
    while (result == AVAHI_ERR_COLLISION) {
        name_ = alternativeServiceName(name_);
        result = addService();
    }
    if (result == AVAHI_OK) result = avahi_entry_group_commit(group_);
    if (result != AVAHI_OK) refuse(result);
}

/// Leaves an empty group.
int AvahiAnnouncer::prepareGroup()
{
    if (group_ != nullptr) return avahi_entry_group_reset(group_);
    group_ = avahi_entry_group_new(client_, groupChanged, this);
    return group_ != nullptr ? AVAHI_OK : avahi_client_errno(client_);
}

int AvahiAnnouncer::addService()
{
    constexpr AvahiPublishFlags noFlags{};
    constexpr const char* defaultDomain = nullptr;
    constexpr const char* thisHost = nullptr;
    announcedName_->set(QString::fromUtf8(name_));
    return avahi_entry_group_add_service_strlst(group_, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC,
        noFlags, name_.constData(), type_.constData(), defaultDomain, thisHost, port_, nullptr);
}

void AvahiAnnouncer::refuse(int avahiError)
{
    if (!isFinal(avahiError)) return session_.fail(avahiError);
    log(QStringLiteral("DNS-SD cannot announce “%1”: %2")
            .arg(QString::fromUtf8(name_), QString::fromUtf8(avahi_strerror(avahiError))));
}

/// Comes more than once: the daemon registers anew when the network changes.
void AvahiAnnouncer::established()
{
    const bool isBack = session_.confirm();
    if (!isBack && name_ == toldName_) return;
    toldName_ = name_;
    const QString start = isBack ? QStringLiteral("DNS-SD is back: ") : QStringLiteral("DNS-SD: ");
    const QString reason = name_ == wantedName_
        ? QString()
        : QStringLiteral("the name “%1” is taken; ").arg(QString::fromUtf8(wantedName_));
    log(start + reason + QStringLiteral("announced as “%1”").arg(QString::fromUtf8(name_)));
}

void AvahiAnnouncer::log(const QString& line)
{
    gate_.pass([&] { log_(line); });
}

} // namespace platform
