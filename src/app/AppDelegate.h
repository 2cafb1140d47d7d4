#pragma once

#include "app/AccessPanel.h"
#include "app/DevicesFlow.h"
#include "app/InboundTransfer.h"
#include "app/KeepAwake.h"
#include "app/MainPanel.h"
#include "app/PairingFlow.h"
#include "app/ReceiverChooser.h"
#include "app/SendFlow.h"
#include "app/ServiceControl.h"
#include "app/ServiceHealth.h"
#include "app/SettingsFlow.h"
#include "app/StatusItem.h"
#include "app/TransferHUD.h"
#include "discovery/FerrylaneDeviceDiscovery.h"
#include "receiver/HTTPServer.h"
#include "service/NetworkPresence.h"
#include "transferlog/TransferLogKeeper.h"

#include <memory>
#include <optional>

namespace ferrylane {

/// The application: owns the receiver service, the discovery of phones, the status item and every
/// window, and lets each know of the others. On the main thread.
class AppDelegate final : public InboundTransfer::Views,
                          public PairingFlow::Views,
                          public SendFlow::Views,
                          public ServiceControl::Service {
public:
    /// All references must outlive the application.
    struct Collaborators {
        platform::TcpNetwork& network;
        platform::SerialQueue& mainQueue;
        platform::NotificationCenter& notifications;
        platform::SerialQueue& visionQueue; ///< where pictures of pairing codes are looked at
        const platform::Clock& clock;
        Cameras& cameras;
        /// Called with true when files begin to be sent or received, with false when none are.
        std::function<void(bool)> keepAwake;
    };

    explicit AppDelegate(Collaborators collaborators);
    /// Cuts off what is being sent, which is recorded as failed, and what is being received, unless
    /// all of it has come: that is stored and recorded, however slow the disk is.
    ~AppDelegate() override;

    /// Starts everything and shows the main panel. What could not be started or read is told to the
    /// user; the rest serves without it.
    void applicationDidFinishLaunching();
    /// Shows the main panel.
    void show();
    /// Does what the program was started for, or started again: "received-files", "pair",
    /// "devices", "restart" or "quit"; for any other word the main panel is shown.
    void perform(const QByteArray& action);

    /// What the system tells.
    void networkPathChanged(bool isSatisfied) { control_->networkPathChanged(isSatisfied); }
    void systemDidWake() { control_->systemDidWake(); }
    /// The desktop has a tray now.
    void trayDidAppear() { statusItem_->renew(); }

private:
    // InboundTransfer::Views
    void setStatusTitle(const QString& title) override;
    void setReceiveStatus(const QString& text) override;
    void showProgressWindow() override;
    void setProgress(const QString& fileName, double percent, const QString& text) override;
    void closeProgressWindow() override;

    // PairingFlow::Views
    bool pairsWithoutCamera(const QString& title, const QString& text) override;

    // SendFlow::Views, and of PairingFlow's
    SendChoice chooseReceiver(const QString& question, const QList<SendChoice>& choices) override;
    void alert(const QString& title, const QString& text) override;
    void setSendStatus(const QString& text, bool isShown) override;
    void setSendProgress(double percent, bool isShown) override;

    // ServiceControl::Service
    void start() override;
    void stop() override;
    void setVisible(bool visible) override;
    void rebind(const QString& reason) override;
    void startDiscovery() override;
    void stopDiscovery() override;
    void cancelSend() override;
    void refreshPairingCode() override;

    void createServer();
    void socketChanged(platform::Transport transport, const std::error_code& error);
    /// The service could not start: tells why, and what to do.
    void giveUpService();
    void switchService(bool on);
    void createStatusItem();
    void createPanel();
    [[nodiscard]] SendFlow::Collaborators sendCollaborators();
    [[nodiscard]] DevicesFlow::Collaborators devicesCollaborators();
    [[nodiscard]] SettingsFlow::Collaborators settingsCollaborators();

    void nearbyDevicesChanged(const QStringList& names);
    void deviceRenamed();
    void endTransfers();
    void showAccess();

    /// An alert that nothing waits for.
    void inform(const QString& title, const QString& text);
    void setSending(bool isSending);
    void showServiceState();
    void showPairingCode();
    void refreshHistory();
    void received(const QString& fileName);
    void stopCurrentTransfer();
    void chooseFilesToSend();

    Collaborators with_;
    NetworkPresence presence_;
    TransferLogKeeper transferLog_;
    platform::NotificationCenter::Observation transferLogChange_;
    ServiceHealth health_;
    KeepAwake keepAwake_;
    std::optional<HTTPServer> server_; ///< none while it cannot be made
    FerrylaneDeviceDiscovery deviceDiscovery_;
    QStringList availableDeviceNames_;

    QString lastFolder_; ///< where files to send were chosen

    std::unique_ptr<StatusItem> statusItem_;
    std::unique_ptr<MainPanel> panel_;
    std::unique_ptr<TransferHUD> transferHUD_;
    std::unique_ptr<AccessPanel> accessPanel_;

    std::unique_ptr<ServiceControl> control_;
    std::unique_ptr<InboundTransfer> inbound_;
    std::unique_ptr<PairingFlow> pairing_;
    std::unique_ptr<SendFlow> sendFlow_;
    std::unique_ptr<DevicesFlow> devices_;
    std::unique_ptr<SettingsFlow> settings_;
};

} // namespace ferrylane
