#include "discovery/FerrylaneDeviceDiscovery.h"

#include "core/DeviceName.h"
#include "core/Log.h"
#include "core/Service.h"
#include "discovery/UdpScanner.h"
#include "platform/ThreadQueue.h"
#include "protocol/DisplayName.h"

#include <utility>

namespace ferrylane {

namespace {

constexpr platform::Duration scanPeriod = std::chrono::seconds(3);

} // namespace

FerrylaneDeviceDiscovery::Parts FerrylaneDeviceDiscovery::Parts::ofSystem(
    platform::SerialQueue& mainQueue, const platform::Clock& clock,
    const std::shared_ptr<const platform::AnnouncedName>& ownService)
{
    return {mainQueue, clock, std::make_unique<platform::ThreadQueue>("ferrylane.mac.discovery"),
        [ownService] { return platform::ServiceBrowser::create(ownService); },
        std::make_unique<UdpScanner>(clock), [] { return ferrylaneDeviceSuffix(); }};
}

FerrylaneDeviceDiscovery::FerrylaneDeviceDiscovery(Parts parts)
    : parts_(std::move(parts))
    , queue_(*parts_.queue)
    , onChange_(std::make_shared<ChangeHandler>())
    , ownedQueue_(std::move(parts_.queue))
{
}

FerrylaneDeviceDiscovery::~FerrylaneDeviceDiscovery()
{
    run_.request_stop();
    browser_.reset();
}

void FerrylaneDeviceDiscovery::setOnChange(ChangeHandler onChange)
{
    *onChange_ = std::move(onChange);
}

void FerrylaneDeviceDiscovery::start()
{
    if (browser_) return;
    run_ = std::stop_source();
    browse();
    queue_.async([this, run = run_.get_token()] { tick(run); });
}

void FerrylaneDeviceDiscovery::browse()
{
    browser_ = parts_.makeBrowser();
    browser_->start(
        dnsSdServiceType,
        [this, run = run_.get_token()](const QStringList& names) {
            queue_.async([this, names, run] { takeAdvertised(names, run); });
        },
        [](const QString& reason) {
            flLog(QStringLiteral("Ferrylane device discovery failed: ") + reason);
        });
}

void FerrylaneDeviceDiscovery::stop()
{
    run_.request_stop();
    browser_.reset();
    queue_.async([this] { forget(); });
    // Of no run that can be stopped: it comes also when a start has followed.
    publish({}, std::stop_token());
}

void FerrylaneDeviceDiscovery::forget()
{
    nearby_.clear();
    if (const auto tickToCome = std::exchange(nextTick_, nullptr)) tickToCome->cancel();
    logNames({});
}

void FerrylaneDeviceDiscovery::tick(const std::stop_token& run)
{
    if (run.stop_requested()) return;
    // Before the scan, whose length must not add to the period.
    nextTick_ = queue_.after(scanPeriod, [this, run] { tick(run); });
    using Outcome = DiscoveryScanner::Outcome;
    const Outcome outcome
        = parts_.scanner->scan([this](const DiscoveryReply& reply,
                                   const platform::Endpoint& source) { accept(reply, source); },
            run);
    if (outcome != Outcome::notAsked) emitSnapshot(run);
    // Who has not been heard may have one of the names, too.
    if (outcome != Outcome::complete) return pairedAddresses_.forgetClaims();
    pairedAddresses_.refresh();
}

void FerrylaneDeviceDiscovery::accept(const DiscoveryReply& reply, const platform::Endpoint& source)
{
    if (isOwnName(reply.name)) return;
    nearby_.markSeen(reply.name, parts_.clock.now());
    pairedAddresses_.claim(reply, source);
}

bool FerrylaneDeviceDiscovery::isOwnName(const QString& name) const
{
    return name.compare(parts_.deviceName(), Qt::CaseInsensitive) == 0;
}

void FerrylaneDeviceDiscovery::takeAdvertised(
    const QStringList& instanceNames, const std::stop_token& run)
{
    if (run.stop_requested()) return;
    QStringList names;
    for (const QString& instanceName : instanceNames) {
        const QString name = ferrylaneDisplayNameForDiscoveredService(instanceName);
        if (!isOwnName(name)) names.append(name);
    }
    nearby_.setAdvertised(names);
    emitSnapshot(run);
}

void FerrylaneDeviceDiscovery::emitSnapshot(const std::stop_token& run)
{
    if (run.stop_requested()) return;
    const QStringList names = nearby_.snapshot(parts_.clock.now(), parts_.deviceName());
    logNames(names);
    publish(names, run);
}

void FerrylaneDeviceDiscovery::logNames(const QStringList& names)
{
    if (loggedNames_ == names || !namesLines_.take(parts_.clock.now())) return;
    loggedNames_ = names;
    flLog(QStringLiteral("Nearby devices: ") + names.join(QStringLiteral(", ")));
}

void FerrylaneDeviceDiscovery::publish(const QStringList& names, const std::stop_token& run)
{
    parts_.mainQueue.async([handler = std::weak_ptr(onChange_), names, run] {
        const auto present = handler.lock();
        if (present && !run.stop_requested() && *present) (*present)(names);
    });
}

} // namespace ferrylane
