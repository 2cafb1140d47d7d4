#include "app/AppDelegate.h"

#include "app/flows/Maintenance.h"
#include "app/widgets/AskDialog.h"
#include "app/widgets/QRCodeButton.h"
#include "app/windows/TransferTexts.h"
#include "core/DeviceName.h"
#include "core/LocalAddresses.h"
#include "core/Service.h"

#include <QApplication>

namespace ferrylane {

AppDelegate::AppDelegate(FerrylaneService& service)
    : service_(service)
    , trayIcon_(menu_)
    , pairing_(panel_)
    , sending_(service_, pairing_, panel_)
    , settings_(service_, panel_)
{
    fillMenu();
    panel_.setContextMenu(&menu_);
    panel_.setDeviceName(ferrylaneDeviceSuffix());
    connectReceiving();

    connect(&panel_, &MainPanel::serviceSwitched, &service_, &FerrylaneService::setServiceRunning);
    connect(&panel_, &MainPanel::qrCodeRequested, this, &AppDelegate::showAccess);
    connect(&settings_, &SettingsFlow::devicesRequested, this, &AppDelegate::showPairedDevices);
    connect(&devicesPanel_, &DevicesPanel::pairingRequested, this,
        [this] { pairing_.pairDeviceThen(); });
    connect(&service_, &FerrylaneService::availableDevicesChanged, this,
        [this](const QStringList& names) {
            if (devicesPanel_.isVisible()) devicesPanel_.setNearby(names);
        });
    connect(&service_, &FerrylaneService::pairingLinkChanged, this,
        [this](const QString& link) { panel_.setPairingCode(qr(link)); });
    connect(&service_, &FerrylaneService::serviceChanged, this, &AppDelegate::showServiceState);
    connect(&service_, &FerrylaneService::serviceFailed, this, [this](const QString& text) {
        inform(&panel_, QStringLiteral("Ferrylane cannot receive files"), text);
    });
    connect(&service_.transferLog(), &TransferLogKeeper::ferrylaneTransferLogChanged, this,
        &AppDelegate::showHistory);
}

AppDelegate::~AppDelegate()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        window->hide();
    }
    QGuiApplication::sync();
    service_.end();
}

void AppDelegate::fillMenu()
{
    menu_.addAction(QStringLiteral("Show Ferrylane"), &panel_, &MainPanel::present);
    serviceMenuItem_ = menu_.addAction(QStringLiteral("Service running"), this,
        [this] { service_.setServiceRunning(!service_.serviceRunning()); });
    serviceMenuItem_->setCheckable(true);
    menu_.addAction(
        QStringLiteral("Open Received Files"), this, [this] { settings_.openFolder(); });
    menu_.addAction(
        QStringLiteral("Pair Device\u2026"), this, [this] { pairing_.pairDeviceThen(); });
    menu_.addAction(QStringLiteral("Paired Devices\u2026"), this, &AppDelegate::showPairedDevices);
    menu_.addSeparator();
    menu_.addAction(QStringLiteral("Restart Ferrylane"), QKeySequence(Qt::CTRL | Qt::Key_R), this,
        [this] { settings_.restartApp(); });
    menu_.addAction(QStringLiteral("Quit Ferrylane"), QKeySequence(Qt::CTRL | Qt::Key_Q),
        QCoreApplication::instance(), &QCoreApplication::quit);
}

void AppDelegate::connectReceiving()
{
    const auto show
        = [this](const TransferState& state) { panel_.setReceiveStatus(receiveStatusText(state)); };
    connect(&service_, &FerrylaneService::ferrylaneStarted, this, show);
    connect(&service_, &FerrylaneService::ferrylaneStarted, this,
        [this] { trayIcon_.setTitle(receivingTitle()); });
    connect(&service_, &FerrylaneService::ferrylaneStarted, &transferHUD_, &TransferHUD::begin);
    connect(&service_, &FerrylaneService::ferrylaneProgress, this, show);
    connect(&service_, &FerrylaneService::ferrylaneProgress, &transferHUD_, &TransferHUD::setState);
    connect(&service_, &FerrylaneService::ferrylaneReceived, this, &AppDelegate::received);
    connect(&service_, &FerrylaneService::ferrylaneStopped, &transferHUD_, &TransferHUD::stop);
    connect(&service_, &FerrylaneService::ferrylaneStopped, this, [this] {
        panel_.setReceiveStatus({});
        trayIcon_.setTitle(idleTitle());
    });
    connect(&transferHUD_, &TransferHUD::stopRequested, &service_,
        &FerrylaneService::stopCurrentTransfer);
}

void AppDelegate::applicationDidFinishLaunching()
{
    showHistory();
    panel_.present();
    service_.begin();
    showServiceState();
    panel_.setPairingCode(qr(service_.pairingLink()));
    if (const QString problem = storageProblem(); !problem.isEmpty()) {
        inform(&panel_, QStringLiteral("Ferrylane cannot keep its files"), problem);
    }
}

void AppDelegate::perform(const QByteArray& action)
{
    if (action == "received-files") {
        settings_.openFolder();
    } else if (action == "pair") {
        pairing_.pairDeviceThen();
    } else if (action == "devices") {
        showPairedDevices();
    } else if (action == "restart") {
        settings_.restartApp();
    } else if (action == "quit") {
        QApplication::quit();
    } else {
        panel_.present();
    }
}

void AppDelegate::received(const ReceivedFile& file)
{
    transferHUD_.finish(file.name());
    panel_.setReceiveStatus({});
    trayIcon_.setTitle(receivedTitle(++receivedCount_));
    if (panel_.isVisible()) {
        panel_.setTitle(QStringLiteral("Ferrylane \u2014 Received ") + file.name());
    }
}

void AppDelegate::showServiceState()
{
    serviceMenuItem_->setChecked(service_.serviceRunning());
    panel_.setServiceState(service_.serviceRunning(), service_.faultText());
}

void AppDelegate::showHistory()
{
    service_.transferLog().read(
        &panel_, historyRows, [this](const auto& rows) { panel_.setHistory(rows); });
}

void AppDelegate::showPairedDevices()
{
    devicesPanel_.setNearby(service_.availableDeviceNames());
    devicesPanel_.present();
}

void AppDelegate::showAccess()
{
    accessPanel_ = std::make_unique<AccessPanel>(qr(service_.pairingLink()),
        QStringLiteral("http://%1:%2").arg(ferrylaneLocalHostForURL(), QString::number(port)));
    accessPanel_->present();
}

} // namespace ferrylane
