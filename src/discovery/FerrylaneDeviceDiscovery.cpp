#include "discovery/FerrylaneDeviceDiscovery.h"

#include "core/DeviceName.h"
#include "core/Log.h"
#include "core/Service.h"
#include "discovery/UdpScanner.h"
#include "pairing/DisplayName.h"
#include "platform/ThreadQueue.h"

#include <utility>

namespace ferrylane {

namespace {

constexpr platform::Duration scanPeriod = std::chrono::seconds(3);

void logNames(const QStringList& names)
{
    flLog(QStringLiteral("Nearby devices: ") + names.join(QStringLiteral(", ")));
}

} // namespace

FerrylaneDeviceDiscovery::Parts FerrylaneDeviceDiscovery::Parts::ofSystem(
    platform::SerialQueue& mainQueue, const platform::Clock& clock)
{
    return {mainQueue, clock, std::make_unique<platform::ThreadQueue>("ferrylane.mac.discovery"),
        [] { return platform::ServiceBrowser::create(); }, std::make_unique<UdpScanner>(clock),
        [] { return ferrylaneDeviceSuffix(); }};
}

FerrylaneDeviceDiscovery::FerrylaneDeviceDiscovery(Parts parts)
    : parts_(std::move(parts)), handlers_(std::make_shared<Handlers>())
{
}

FerrylaneDeviceDiscovery::~FerrylaneDeviceDiscovery()
{
    run_.request_stop();
    browser_.reset();
    // Waits for the running task, so none outlives this.
    parts_.queue.reset();
}

void FerrylaneDeviceDiscovery::setOnChange(ChangeHandler onChange)
{
    handlers_->onChange = std::move(onChange);
}

void FerrylaneDeviceDiscovery::setOnAddress(AddressHandler onAddress)
{
    handlers_->onAddress = std::move(onAddress);
}

void FerrylaneDeviceDiscovery::start()
{
    if (browser_) return;
    run_ = std::stop_source();
    browse();
    parts_.queue->async([this, run = run_.get_token()] { tick(run); });
}

void FerrylaneDeviceDiscovery::browse()
{
    browser_ = parts_.makeBrowser();
    browser_->start(
        dnsSdServiceType,
        [this, run = run_.get_token()](const QStringList& names) {
            parts_.queue->async([this, names, run] { takeAdvertised(names, run); });
        },
        [](const QString& reason) {
            flLog(QStringLiteral("Ferrylane device discovery failed: ") + reason);
        });
}

void FerrylaneDeviceDiscovery::stop()
{
    run_.request_stop();
    browser_.reset();
    parts_.queue->async([this] { forget(); });
    logNames({});
    // Of no run that can be stopped: it comes also when a start has followed.
    publish({}, std::stop_token());
}

void FerrylaneDeviceDiscovery::forget()
{
    nearby_.clear();
    if (const auto tickToCome = std::exchange(nextTick_, nullptr)) tickToCome->cancel();
}

void FerrylaneDeviceDiscovery::tick(const std::stop_token& run)
{
    if (run.stop_requested()) return;
    // Before the scan, whose length must not add to the period.
    nextTick_ = parts_.queue->after(scanPeriod, [this, run] { tick(run); });
    const bool scanned = parts_.scanner->scan(
        [&](const DiscoveryReply& reply, const platform::Endpoint& source) {
            accept(reply, source, run);
        },
        run);
    if (scanned) emitSnapshot(run);
}

void FerrylaneDeviceDiscovery::accept(
    const DiscoveryReply& reply, const platform::Endpoint& source, const std::stop_token& run)
{
    if (isOwnName(reply.name)) return;
    nearby_.markSeen(reply.name, parts_.clock.now());
    if (!reply.tcpPort) return;

    const QString baseURL
        = QStringLiteral("http://%1:%2").arg(source.addressText()).arg(*reply.tcpPort);
    parts_.mainQueue.async([handlers = std::weak_ptr(handlers_), name = reply.name, baseURL, run] {
        const auto present = handlers.lock();
        if (!present || run.stop_requested() || !present->onAddress) return;
        present->onAddress(name, baseURL);
    });
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

void FerrylaneDeviceDiscovery::publish(const QStringList& names, const std::stop_token& run)
{
    parts_.mainQueue.async([handlers = std::weak_ptr(handlers_), names, run] {
        const auto present = handlers.lock();
        if (!present || run.stop_requested() || !present->onChange) return;
        present->onChange(names);
    });
}

} // namespace ferrylane
