#include "discovery/FerrylaneDeviceDiscovery.h"

#include "core/DeviceName.h"
#include "core/Log.h"
#include "core/Service.h"
#include "core/Text.h"
#include "protocol/PairingLink.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace ferrylane {

namespace {

platform::TimePoint now()
{
    return platform::SteadyClock().now();
}

bool isOwnName(const QString& name)
{
    return name.compare(ferrylaneDeviceSuffix(), Qt::CaseInsensitive) == 0;
}

void waitUntil(platform::TimePoint time, const std::stop_token& stop)
{
    std::mutex mutex;
    std::condition_variable_any never;
    std::unique_lock lock(mutex);
    never.wait_until(lock, stop, time, [] { return false; });
}

} // namespace

FerrylaneDeviceDiscovery::~FerrylaneDeviceDiscovery()
{
    run_.request_stop();
}

void FerrylaneDeviceDiscovery::start(const platform::ServicePublisher* own)
{
    if (browser_) return;
    browser_ = std::make_unique<platform::ServiceBrowser>(own);
    connect(browser_.get(), &platform::ServiceBrowser::namesChanged, this,
        &FerrylaneDeviceDiscovery::takeAdvertised);
    connect(browser_.get(), &platform::ServiceBrowser::failed, this, [](const QString& reason) {
        flLog(QStringLiteral("Ferrylane device discovery failed: ") + reason);
    });
    browser_->start(dnsSdServiceType);
    run_ = std::stop_source();
    queue_.async([this, run = run_.get_token()] { scanLoop(run); });
}

void FerrylaneDeviceDiscovery::stop()
{
    run_.request_stop();
    browser_.reset();
    bonjourNames_.clear();
    udpSeen_.clear();
    emitSnapshot();
}

void FerrylaneDeviceDiscovery::scanLoop(const std::stop_token& run)
{
    while (!run.stop_requested()) {
        const platform::TimePoint next = now() + rules_.period;
        Scan scan = scanUDP(run, rules_.scan);
        std::erase_if(
            scan.replies, [](const Scan::Reply& reply) { return isOwnName(reply.device.name); });
        QMetaObject::invokeMethod(this, [this, scan, run] {
            if (!run.stop_requested()) takeScan(scan);
        });
        pairedAddresses_.refresh(scan);
        waitUntil(next, run);
    }
}

void FerrylaneDeviceDiscovery::takeScan(const Scan& scan)
{
    if (scan.outcome == Scan::Outcome::notAsked) return;
    for (const Scan::Reply& reply : scan.replies) {
        markSeen(reply.device.name, reply.time);
    }
    emitSnapshot();
}

void FerrylaneDeviceDiscovery::markSeen(const QString& name, platform::TimePoint time)
{
    if (udpSeen_.size() == maximumSeen) forgetSilent(time);
    if (udpSeen_.size() < maximumSeen || udpSeen_.contains(name)) udpSeen_[name] = time;
}

void FerrylaneDeviceDiscovery::forgetSilent(platform::TimePoint now)
{
    std::erase_if(udpSeen_, [&](const auto& entry) { return entry.second < now - rules_.grace; });
}

void FerrylaneDeviceDiscovery::takeAdvertised(const QStringList& instanceNames)
{
    bonjourNames_.clear();
    for (const QString& instanceName : instanceNames) {
        bonjourNames_.insert(ferrylaneDisplayNameForDiscoveredService(instanceName));
    }
    emitSnapshot();
}

void FerrylaneDeviceDiscovery::emitSnapshot()
{
    forgetSilent(now());
    // Out of a set, so that names that differ only in case keep their order from one snapshot to
    // the next.
    std::set<QString> all = bonjourNames_;
    for (const auto& [name, time] : udpSeen_) {
        all.insert(name);
    }
    std::erase_if(all, isOwnName);
    QStringList names(all.begin(), all.end());
    std::stable_sort(names.begin(), names.end(), NameOrder());
    logNames(names);
    Q_EMIT namesChanged(names);
}

void FerrylaneDeviceDiscovery::logNames(const QStringList& names)
{
    if (loggedNames_ == names || !namesLines_.take(now())) return;
    loggedNames_ = names;
    flLog(QStringLiteral("Nearby devices: ") + names.join(QStringLiteral(", ")));
}

} // namespace ferrylane
