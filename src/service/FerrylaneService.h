#pragma once

#include "core/TransferState.h"
#include "discovery/FerrylaneDeviceDiscovery.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/NetworkPathMonitor.h"
#include "platform/SystemSleep.h"
#include "platform/Tcp.h"
#include "sender/FerrylaneV4Sender.h"
#include "service/HTTPServer.h"
#include "service/ServiceHealth.h"
#include "transferlog/TransferLogKeeper.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <memory>
#include <optional>

namespace ferrylane {

/// Everything that the program does, without a window: receives files and sends them, finds the
/// devices nearby, and records the transfers. Windows and whoever else wants to know connect to its
/// signals. It alone holds the switches (on or off, visible or hidden, the automatic switch-off),
/// which it keeps in the settings, and the state of the transfers. On the main thread.
class FerrylaneService final : public QObject {
    Q_OBJECT

public:
    FerrylaneService();
    /// As end().
    ~FerrylaneService() override;

    /// Starts what the switches say.
    void begin();
    /// Cuts off what is being sent, which is recorded as failed, and what is being received, unless
    /// all of it has come: that is stored and recorded, however slow the disk is. For good.
    void end();

    [[nodiscard]] bool serviceRunning() const { return serviceRunning_; }
    [[nodiscard]] bool visible() const { return visible_; }
    /// Why phones cannot reach the service; empty when they can.
    [[nodiscard]] QString faultText() const { return health_.faultText(); }
    /// For the pairing code; a credential. Empty while the service could not be made.
    [[nodiscard]] QString pairingLink() const;
    /// The names nearby.
    [[nodiscard]] const QStringList& availableDeviceNames() const { return availableDeviceNames_; }
    [[nodiscard]] bool isSending() const { return sending_.isUnderWay(); }
    [[nodiscard]] TransferLogKeeper& transferLog() { return transferLog_; }

    void setServiceRunning(bool on);
    void setVisible(bool visible);
    /// 0 or less: never. Counts from now on.
    void setAutoOffSeconds(qint64 seconds);
    /// The settings have another name for this device.
    void deviceRenamed();
    /// Sends the files to the phone, one after the other. One send at a time.
    void send(const platform::FilePaths& files, const FerrylanePairedTarget& target);
    /// Ends what is being received.
    void stopCurrentTransfer();

Q_SIGNALS:
    /// The service has been switched, or another fault keeps phones away from it.
    void serviceChanged();
    /// The service could not start and is off now: why, and what to do.
    void serviceFailed(const QString& text);
    /// This computer may have another address.
    void pairingLinkChanged(const QString& link);
    void availableDevicesChanged(const QStringList& names);

    // How a file is received.
    void ferrylaneStarted(const TransferState& state);
    void ferrylaneProgress(const TransferState& state);
    void ferrylaneReceived(const ReceivedFile& file);
    /// It failed, or was stopped.
    void ferrylaneStopped();

    /// How files are sent.
    void sendChanged(const TransferState& state);

private:
    void createServer();
    void socketChanged(platform::Transport transport, const std::error_code& error);
    void giveUpService();
    void switchTo(bool on);
    void scheduleAutoOff();

    void startDiscovery();
    void watchNetworkPath();
    void networkPathChanged(bool isSatisfied);
    void scheduleNetworkRebind(const QString& reason, std::chrono::milliseconds delay);
    void rebind(const QString& reason);
    void refreshPairingLink();

    void fileReceived(const ReceivedFile& file);
    void setReceiving(bool isReceiving);
    void setSending(TransferState::Stage stage);
    void sendProgressed(const FerrylaneV4Sender::Progress& progress);
    void sendCompleted(const FerrylaneV4Sender::Result& result);
    void keepAwakeAsNeeded();

    const platform::SteadyClock clock_;
    platform::TcpNetwork network_;
    platform::SystemSleep sleep_;
    TransferLogKeeper transferLog_;
    ServiceHealth health_;
    QStringList availableDeviceNames_;

    bool visible_;
    bool serviceRunning_;
    bool hasInitialNetworkPath_ = false;
    bool hasStartedWithoutPath_ = false;
    QTimer autoOffTimer_;
    QTimer pendingNetworkRebind_;
    QTimer secondRefresh_; ///< of the pairing link

    bool isReceiving_ = false;
    TransferState sending_;
    platform::FilePaths sentFiles_;

    std::optional<HTTPServer> server_; ///< none while it cannot be made
    FerrylaneDeviceDiscovery deviceDiscovery_;
    std::unique_ptr<FerrylaneV4Sender> outboundSender_;
    std::unique_ptr<platform::NetworkPathMonitor> networkPathMonitor_;
};

} // namespace ferrylane
