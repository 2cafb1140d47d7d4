#pragma once

#include "platform/Interface.h"
#include "platform/SerialQueue.h"

#include <QString>

#include <functional>
#include <memory>

namespace ferrylane {

/// The switches of the receiver service: on or off, visible or hidden, the automatic switch-off,
/// and the new start after the network has changed or the computer has woken up. Keeps the switches
/// in the settings. On the main thread.
class ServiceControl {
public:
    /// What it switches.
    class Service : public platform::Interface {
    public:
        virtual void start() = 0;
        virtual void stop() = 0;
        virtual void setVisible(bool visible) = 0;
        virtual void rebind(const QString& reason) = 0;
        virtual void startDiscovery() = 0;
        virtual void stopDiscovery() = 0;
        virtual void cancelSend() = 0;
        /// This computer may have another address.
        virtual void refreshPairingCode() = 0;
    };

    /// Reads the switches. Both references must outlive this. `onSwitched` is called after each
    /// switching on or off.
    ServiceControl(
        Service& service, platform::SerialQueue& mainQueue, std::function<void()> onSwitched);
    ~ServiceControl();
    ServiceControl(const ServiceControl&) = delete;
    ServiceControl& operator=(const ServiceControl&) = delete;

    /// Brings a service that has just been made, and runs, to the state of the switches.
    void begin();

    [[nodiscard]] bool serviceRunning() const { return serviceRunning_; }
    [[nodiscard]] bool visible() const { return visible_; }

    void setServiceRunning(bool on);
    /// It could not start: it is off for now, which is not kept, and on again with the next launch.
    void serviceFailed();
    void setVisible(bool visible);
    /// 0 or less: never. Counts from now on.
    void setAutoOffSeconds(qint64 seconds);
    /// Reads the setting anew and counts from now on.
    void scheduleAutoOff();

    /// Whether the network has a path to others, as is told at the start and after every change.
    void networkPathChanged(bool isSatisfied);
    void systemDidWake();

private:
    void refreshPairingCode();
    void scheduleNetworkRebind(const QString& reason, platform::Duration delay);
    void rebind(const QString& reason);

    Service& service_;
    platform::SerialQueue& mainQueue_;
    std::function<void()> onSwitched_;
    bool visible_;
    bool serviceRunning_;
    bool hasInitialNetworkPath_ = false;
    bool hasStartedWithoutPath_ = false;
    std::shared_ptr<platform::DelayedTask> autoOffTimer_;
    std::shared_ptr<platform::DelayedTask> pendingNetworkRebind_;
    std::shared_ptr<platform::DelayedTask> secondRefresh_;
};

} // namespace ferrylane
