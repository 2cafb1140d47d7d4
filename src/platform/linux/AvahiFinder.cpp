#include "platform/linux/AvahiFinder.h"

namespace platform {

AvahiFinder::AvahiFinder(AvahiLoop& loop, const QString& type,
    ServiceBrowser::ResultsHandler onResults, ServiceBrowser::FailureHandler onFailure,
    Duration retryInterval)
    : type_(type.toUtf8())
    , onResults_(std::move(onResults))
    , onFailure_(std::move(onFailure))
    , session_(loop, *this, retryInterval)
{
}

void AvahiFinder::daemonIsReady(AvahiClient* client)
{
    if (browser_ != nullptr) return;
    constexpr const char* defaultDomain = nullptr;
    constexpr AvahiLookupFlags noFlags{};
    browser_ = avahi_service_browser_new(client, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC,
        type_.constData(), defaultDomain, noFlags, found, this);
    if (browser_ == nullptr) session_.fail(avahi_client_errno(client));
}

void AvahiFinder::clientIsGone()
{
    browser_ = nullptr;
    findings_.clear();
    reportNames();
}

void AvahiFinder::daemonIsLost(const QString& reason)
{
    gate_.pass([&] { onFailure_(reason); });
}

// NOLINTNEXTLINE(readability-function-size): the parameters are Avahi's choice
void AvahiFinder::found(AvahiServiceBrowser* browser, AvahiIfIndex interface,
    AvahiProtocol protocol, AvahiBrowserEvent event, const char* name, const char* /*type*/,
    const char* domain, AvahiLookupResultFlags /*flags*/, void* finder)
{
    auto* const self = static_cast<AvahiFinder*>(finder);
    if (browser != self->browser_) return;
    self->handle(event, {QString::fromUtf8(name), QString::fromUtf8(domain), interface, protocol});
}

void AvahiFinder::handle(AvahiBrowserEvent event, const Finding& finding)
{
    switch (event) {
    case AVAHI_BROWSER_NEW:
        findings_.insert(finding);
        reportNames();
        break;
    case AVAHI_BROWSER_REMOVE:
        findings_.erase(finding);
        reportNames();
        break;
    case AVAHI_BROWSER_CACHE_EXHAUSTED:
    case AVAHI_BROWSER_ALL_FOR_NOW:
        session_.confirm();
        break;
    case AVAHI_BROWSER_FAILURE:
        session_.fail(avahi_client_errno(avahi_service_browser_get_client(browser_)));
        break;
    }
}

void AvahiFinder::reportNames()
{
    QStringList names;
    for (const Finding& finding : findings_) { // sorted by name
        if (names.isEmpty() || names.last() != finding.name) names.append(finding.name);
    }
    if (names == reportedNames_) return;
    reportedNames_ = names;
    gate_.pass([&] { onResults_(names); });
}

} // namespace platform
