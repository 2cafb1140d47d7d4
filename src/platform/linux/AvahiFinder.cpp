#include "platform/linux/AvahiFinder.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace platform {

AvahiFinder::AvahiFinder(AvahiLoop& loop, Wanted wanted, Duration retryInterval)
    : loop_(loop), wanted_(std::move(wanted)), session_(loop, *this, retryInterval)
{
}

void AvahiFinder::daemonIsReady(AvahiClient* client)
{
    if (browser_ != nullptr) return;
    constexpr const char* defaultDomain = nullptr;
    constexpr AvahiLookupFlags noFlags{};
    browser_ = avahi_service_browser_new(client, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC,
        wanted_.type.constData(), defaultDomain, noFlags, found, this);
    if (browser_ == nullptr) session_.fail(avahi_client_errno(client));
}

void AvahiFinder::clientIsGone()
{
    browser_ = nullptr;
    services_.clear();
    reportNames();
}

void AvahiFinder::daemonIsLost(const QString& reason)
{
    gate_.pass([&] { wanted_.onFailure(reason); });
}

// NOLINTNEXTLINE(readability-function-size): the parameters are Avahi's choice
void AvahiFinder::found(AvahiServiceBrowser* browser, AvahiIfIndex interface,
    AvahiProtocol protocol, AvahiBrowserEvent event, const char* name, const char* /*type*/,
    const char* domain, AvahiLookupResultFlags /*flags*/, void* finder)
{
    auto* const self = static_cast<AvahiFinder*>(finder);
    if (browser != self->browser_) return;
    AvahiLoop::attempt([&] {
        self->handle(
            event, QString::fromUtf8(name), {QString::fromUtf8(domain), interface, protocol});
    });
}

void AvahiFinder::handle(AvahiBrowserEvent event, const QString& name, const Place& place)
{
    switch (event) {
    case AVAHI_BROWSER_NEW:
        add(name, place);
        break;
    case AVAHI_BROWSER_REMOVE:
        remove(name, place);
        break;
    case AVAHI_BROWSER_CACHE_EXHAUSTED:
    case AVAHI_BROWSER_ALL_FOR_NOW:
        session_.confirm();
        reportNames();
        break;
    case AVAHI_BROWSER_FAILURE:
        session_.fail(avahi_client_errno(avahi_service_browser_get_client(browser_)));
        break;
    }
}

void AvahiFinder::add(const QString& name, const Place& place)
{
    // By name: the flag for one's own is set only where announcing and browsing share a client,
    // and the one for this computer's not when the daemon remembers what has been withdrawn.
    if (wanted_.notThis && wanted_.notThis->is(name)) return;
    if (services_.size() == maximumKnown && !services_.contains(name)) return;
    Service& service = services_[name];
    if (service.places.empty()) service.order = ++foundByNow_;
    service.places.insert(place);
    reportSoon();
}

void AvahiFinder::remove(const QString& name, const Place& place)
{
    const auto service = services_.find(name);
    if (service == services_.end()) return;
    service->second.places.erase(place);
    if (service->second.places.empty()) services_.erase(service);
    reportSoon();
}

void AvahiFinder::reportSoon()
{
    if (std::exchange(isReportDue_, true)) return;
    loop_.wakeAfter(this, settlingTime, [this] { reportNames(); });
}

void AvahiFinder::reportNames()
{
    loop_.cancelWake(this);
    isReportDue_ = false;
    const QStringList names = firstFound();
    if (names == reportedNames_) return;
    reportedNames_ = names;
    gate_.pass([&] { wanted_.onResults(names); });
}

QStringList AvahiFinder::firstFound() const
{
    std::vector<std::pair<std::uint64_t, QString>> inOrder;
    for (const auto& [name, service] : services_) {
        inOrder.emplace_back(service.order, name);
    }
    std::sort(inOrder.begin(), inOrder.end());
    inOrder.resize(std::min(inOrder.size(), ServiceBrowser::maximumNames));
    QStringList names;
    for (const auto& [order, name] : inOrder) {
        names.append(name);
    }
    names.sort();
    return names;
}

} // namespace platform
