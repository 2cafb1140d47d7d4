#pragma once

#include "app/flows/PairingFlow.h"
#include "app/flows/SendFlow.h"
#include "app/flows/SettingsFlow.h"
#include "app/windows/AccessPanel.h"
#include "app/windows/DevicesPanel.h"
#include "app/windows/MainPanel.h"
#include "app/windows/TransferHUD.h"
#include "app/windows/TrayIcon.h"
#include "service/FerrylaneService.h"

#include <QMenu>
#include <QObject>

#include <memory>

namespace ferrylane {

/// Makes the windows of the application and connects them with the service and with one another. On
/// the main thread.
class AppDelegate final : public QObject {
    Q_OBJECT

public:
    /// The service must outlive the windows.
    explicit AppDelegate(FerrylaneService& service);
    /// Ends the service. The windows go first: that may take a while.
    ~AppDelegate() override;

    /// Starts everything and shows the main panel. What could not be started or read is told to the
    /// user; the rest serves without it.
    void applicationDidFinishLaunching();
    /// Does what the program was started for, or started again: "received-files", "pair",
    /// "devices", "restart" or "quit"; for any other word the main panel is shown.
    void perform(const QByteArray& action);
    /// The desktop has a tray now.
    void trayDidAppear() { trayIcon_.renew(); }

private:
    void fillMenu();
    void connectReceiving();
    void received(const ReceivedFile& file);
    void showServiceState();
    void showHistory();
    void showPairedDevices();
    void showAccess();

    FerrylaneService& service_;
    qint64 receivedCount_ = 0; ///< since the launch

    QMenu menu_;
    QAction* serviceMenuItem_ = nullptr;
    TrayIcon trayIcon_;
    MainPanel panel_;
    TransferHUD transferHUD_;
    DevicesPanel devicesPanel_;
    std::unique_ptr<AccessPanel> accessPanel_;
    PairingFlow pairing_;
    SendFlow sending_;
    SettingsFlow settings_;
};

} // namespace ferrylane
