#include "app/ServiceControl.h"

#include "core/Settings.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ferrylane {

using namespace std::chrono_literals;

namespace {

// Changes come in bursts; the last one counts.
constexpr platform::Duration networkSettlingTime = 1250ms;
constexpr platform::Duration wakeSettlingTime = 1500ms;
// The new address may come a little after the new path.
constexpr platform::Duration secondRefreshDelay = 1s;

// A damaged setting must not leave the range of the clock.
constexpr std::chrono::seconds longestAutoOff = std::chrono::hours(24 * 365);

void cancel(std::shared_ptr<platform::DelayedTask>& task)
{
    if (const auto pending = std::exchange(task, nullptr)) pending->cancel();
}

} // namespace

ServiceControl::ServiceControl(
    Service& service, platform::SerialQueue& mainQueue, std::function<void()> onSwitched)
    : service_(service)
    , mainQueue_(mainQueue)
    , onSwitched_(std::move(onSwitched))
    , visible_(userSettings().boolean(ferrylaneVisibleKey, true))
    , serviceRunning_(userSettings().boolean(ferrylaneServiceRunningKey, true))
{
}

ServiceControl::~ServiceControl()
{
    cancel(autoOffTimer_);
    cancel(pendingNetworkRebind_);
    cancel(secondRefresh_);
}

void ServiceControl::begin()
{
    service_.setVisible(visible_);
    if (serviceRunning_) {
        service_.startDiscovery();
    } else {
        service_.stop();
    }
    scheduleAutoOff();
}

void ServiceControl::setServiceRunning(bool on)
{
    serviceRunning_ = on;
    userSettings().set(ferrylaneServiceRunningKey, on);
    if (on) {
        service_.start();
        service_.startDiscovery();
    } else {
        service_.cancelSend();
        service_.stopDiscovery();
        service_.stop();
    }
    scheduleAutoOff();
    onSwitched_();
}

void ServiceControl::serviceFailed()
{
    serviceRunning_ = false;
    // Phones are looked for all the same: files can be sent to them.
    service_.stop();
    scheduleAutoOff();
    onSwitched_();
}

void ServiceControl::setVisible(bool visible)
{
    visible_ = visible;
    userSettings().set(ferrylaneVisibleKey, visible);
    service_.setVisible(visible);
}

void ServiceControl::setAutoOffSeconds(qint64 seconds)
{
    userSettings().set(ferrylaneAutoOffSecondsKey, seconds);
    scheduleAutoOff();
}

void ServiceControl::scheduleAutoOff()
{
    cancel(autoOffTimer_);
    const qint64 seconds = userSettings().integer(ferrylaneAutoOffSecondsKey);
    if (!serviceRunning_ || seconds < 1) return;
    autoOffTimer_
        = mainQueue_.after(std::min(std::chrono::seconds(seconds), longestAutoOff), [this] {
              if (serviceRunning_) setServiceRunning(false);
          });
}

void ServiceControl::networkPathChanged(bool isSatisfied)
{
    if (!isSatisfied) {
        hasStartedWithoutPath_ = hasStartedWithoutPath_ || !hasInitialNetworkPath_;
    } else if (std::exchange(hasInitialNetworkPath_, true)) {
        scheduleNetworkRebind(QStringLiteral("network path/IP change"), networkSettlingTime);
    } else if (hasStartedWithoutPath_) {
        // The sockets are open to it already; only the address is new.
        refreshPairingCode();
    }
}

void ServiceControl::systemDidWake()
{
    scheduleNetworkRebind(QStringLiteral("system wake"), wakeSettlingTime);
}

void ServiceControl::scheduleNetworkRebind(const QString& reason, platform::Duration delay)
{
    if (!serviceRunning_) return;
    cancel(pendingNetworkRebind_);
    pendingNetworkRebind_ = mainQueue_.after(delay, [this, reason] { rebind(reason); });
}

void ServiceControl::rebind(const QString& reason)
{
    if (!serviceRunning_) return;
    service_.rebind(reason);
    service_.stopDiscovery();
    service_.startDiscovery();
    refreshPairingCode();
}

void ServiceControl::refreshPairingCode()
{
    service_.refreshPairingCode();
    cancel(secondRefresh_);
    secondRefresh_
        = mainQueue_.after(secondRefreshDelay, [this] { service_.refreshPairingCode(); });
}

} // namespace ferrylane
