#include "app/AppDelegate.h"

#include "app/AskDialog.h"
#include "app/QRImage.h"
#include "app/StorageCheck.h"
#include "app/TransferTexts.h"
#include "core/DeviceName.h"
#include "core/LocalAddresses.h"
#include "core/Log.h"
#include "core/Notifications.h"
#include "protocol/PairingLink.h"

#include <QApplication>
#include <QFileDialog>

#include <system_error>
#include <utility>

namespace ferrylane {

AppDelegate::AppDelegate(Collaborators collaborators)
    : with_(std::move(collaborators))
    , transferLog_(with_.mainQueue, with_.notifications)
    , transferLogChange_(with_.notifications.observe(
          FerrylaneTransferLogChanged, [this](const auto& /*payload*/) { refreshHistory(); }))
    , keepAwake_(with_.notifications, with_.keepAwake)
    , deviceDiscovery_(FerrylaneDeviceDiscovery::Parts::ofSystem(
          with_.mainQueue, with_.clock, presence_.announcedName()))
    , control_(
          std::make_unique<ServiceControl>(*this, with_.mainQueue, [this] { showServiceState(); }))
    , inbound_(std::make_unique<InboundTransfer>(with_.notifications, with_.mainQueue, *this,
          [this](const QString& fileName) { received(fileName); }))
    , pairing_(std::make_unique<PairingFlow>(PairingFlow::Collaborators{
          with_.cameras, with_.visionQueue, with_.mainQueue, with_.clock, *this}))
    , sendFlow_(std::make_unique<SendFlow>(sendCollaborators()))
    , devices_(std::make_unique<DevicesFlow>(devicesCollaborators()))
    , settings_(std::make_unique<SettingsFlow>(settingsCollaborators()))
{
}

AppDelegate::~AppDelegate()
{
    // The wait may be long.
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        window->hide();
    }
    QGuiApplication::sync();
    sendFlow_->cancelAndWait();
    if (server_) server_->end();
}

SendFlow::Collaborators AppDelegate::sendCollaborators()
{
    return {with_.network, *this,
        [this](const FerrylaneTransfer& transfer) { transferLog_.append(transfer); },
        [this] { return availableDeviceNames_; },
        [this](SendFlow::PairedHandler onPaired) { pairing_->pairDeviceThen(std::move(onPaired)); },
        [this](bool isSending) { setSending(isSending); }};
}

DevicesFlow::Collaborators AppDelegate::devicesCollaborators()
{
    return {[this] { return availableDeviceNames_; },
        [](const QString& name) {
            return askWhether(QApplication::activeWindow(),
                QStringLiteral("Remove pairing with %1?").arg(name),
                QStringLiteral("This removes only the saved trust record on this Mac."),
                QStringLiteral("Remove"));
        },
        [this] { pairing_->pairDeviceThen({}); }};
}

SettingsFlow::Collaborators AppDelegate::settingsCollaborators()
{
    return {*control_, transferLog_,
        [this](const QString& title, const QString& text) { alert(title, text); },
        [this] { devices_->showPairedDevices(); }, [this] { deviceRenamed(); },
        [this] { endTransfers(); }};
}

void AppDelegate::applicationDidFinishLaunching()
{
    createServer();
    deviceDiscovery_.setOnChange([this](const QStringList& names) { nearbyDevicesChanged(names); });
    control_->begin();
    createStatusItem();
    show();
    if (health_.isFaulty() && control_->serviceRunning()) giveUpService();
    if (const QString problem = storageProblem(); !problem.isEmpty()) {
        inform(QStringLiteral("Ferrylane cannot keep its files"), problem);
    }
}

void AppDelegate::createServer()
{
    try {
        server_.emplace(HTTPServer::Collaborators{with_.network, with_.mainQueue,
            with_.notifications, with_.clock, presence_, presence_,
            [this](platform::Transport transport, const std::error_code& error) {
                socketChanged(transport, error);
            }});
    } catch (const std::system_error& error) {
        flLog(QStringLiteral("Could not start Ferrylane: ")
            + QString::fromStdString(error.code().message()));
        health_.set(platform::Transport::udp, error.code());
    }
}

void AppDelegate::socketChanged(platform::Transport transport, const std::error_code& error)
{
    health_.set(transport, error);
    if (health_.isFaulty() && !health_.hasBeenReachable()) {
        giveUpService();
    } else {
        showServiceState();
    }
}

void AppDelegate::giveUpService()
{
    control_->serviceFailed();
    inform(QStringLiteral("Ferrylane cannot receive files"),
        health_.faultText() + QStringLiteral("\n\n") + health_.adviceText());
}

void AppDelegate::switchService(bool on)
{
    health_.reset();
    control_->setServiceRunning(on);
}

void AppDelegate::createStatusItem()
{
    statusItem_ = std::make_unique<StatusItem>(StatusItem::Intents{
        .show = [this] { show(); },
        .openReceivedFiles = [this] { settings_->openFolder(); },
        .pairDevice = [this] { pairing_->pairDeviceThen({}); },
        .showPairedDevices = [this] { devices_->showPairedDevices(); },
        .restart = [this] { settings_->restartApp(); },
        .quit = [] { QApplication::quit(); },
        .toggleService = [this] { switchService(!control_->serviceRunning()); },
    });
    statusItem_->setTitle(idleTitle());
    statusItem_->setServiceRunning(control_->serviceRunning());
}

void AppDelegate::createPanel()
{
    panel_ = std::make_unique<MainPanel>(MainPanel::Intents{
        .showSettings = [this] { settings_->showInfo(); },
        .nameDevice = [this] { settings_->nameThisDevice(panel_.get()); },
        .enlargeQRCode = [this] { showAccess(); },
        .openReceivedFiles = [this] { settings_->openDestination(); },
        .chooseFiles = [this] { chooseFilesToSend(); },
        .keepsInTaskbar = [this] { return !statusItem_->hasHost(); },
        .serviceSwitched = [this](bool isOn) { switchService(isOn); },
        .filesDropped
        = [this](const platform::FilePaths& paths) { sendFlow_->chooseReceiverAndSend(paths); },
    });
    panel_->setContextMenu(&statusItem_->menu());
    panel_->setDeviceName(ferrylaneDeviceSuffix());
    panel_->setSendStatus(QStringLiteral("Choose or drop files, then select a destination"), true);
    showPairingCode();
    showServiceState();
    refreshHistory();
}

void AppDelegate::show()
{
    if (!panel_) createPanel();
    panel_->present();
}

void AppDelegate::perform(const QByteArray& action)
{
    if (action == "received-files") {
        settings_->openFolder();
    } else if (action == "pair") {
        pairing_->pairDeviceThen({});
    } else if (action == "devices") {
        devices_->showPairedDevices();
    } else if (action == "restart") {
        settings_->restartApp();
    } else if (action == "quit") {
        QApplication::quit();
    } else {
        show();
    }
}

void AppDelegate::showServiceState()
{
    const bool isOn = control_->serviceRunning();
    if (statusItem_) statusItem_->setServiceRunning(isOn);
    if (panel_) panel_->setServiceState(isOn, health_.faultText());
}

void AppDelegate::showPairingCode()
{
    if (!panel_ || !server_) return;
    panel_->setPairingCode(
        qr(ferrylanePairingLink(ferrylaneLocalHostForURL(), port, server_->sessionKeyB64()), 1));
}

void AppDelegate::setSending(bool isSending)
{
    if (server_) server_->setOutboundBusy(isSending);
    keepAwake_.setSending(isSending);
}

void AppDelegate::refreshHistory()
{
    transferLog_.read([this](const QList<FerrylaneTransferLogEntry>& entries) {
        return [this, rows = historyRows(entries)] {
            if (panel_) panel_->setHistory(rows);
        };
    });
}

void AppDelegate::nearbyDevicesChanged(const QStringList& names)
{
    if (std::exchange(availableDeviceNames_, names) != names) devices_->devicesChanged();
}

void AppDelegate::deviceRenamed()
{
    if (server_) server_->refreshAdvertisement();
    // Not destroyed here: its label may be what asked for this.
    panel_->hide();
    panel_.release()->deleteLater();
    show();
}

void AppDelegate::endTransfers()
{
    sendFlow_->cancelAndWait();
    if (server_) server_->end();
}

void AppDelegate::showAccess()
{
    if (!server_) return;
    const QString host = ferrylaneLocalHostForURL();
    accessPanel_ = std::make_unique<AccessPanel>(
        qr(ferrylanePairingLink(host, port, server_->sessionKeyB64()), 1),
        QStringLiteral("http://%1:%2").arg(host, QString::number(port)));
    accessPanel_->present();
}

void AppDelegate::received(const QString& fileName)
{
    const auto file = server_ ? server_->lastReceivedFile() : std::nullopt;
    transferLog_.append({.direction = QStringLiteral("Received"),
        .fileName = fileName,
        .size = file ? std::optional(file->size) : std::nullopt});
    if (panel_ && panel_->isVisible()) {
        panel_->setTitle(QStringLiteral("Ferrylane \u2014 Received ") + fileName);
    }
}

void AppDelegate::stopCurrentTransfer()
{
    if (server_) server_->cancelActiveTransfer();
    inbound_->reset();
    flLog(QStringLiteral("Transfer stopped by user"));
}

void AppDelegate::chooseFilesToSend()
{
    QFileDialog dialog(panel_.get(), QStringLiteral("Choose files to send"), lastFolder_);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setLabelText(QFileDialog::Accept, QStringLiteral("Send"));
    if (dialog.exec() != QDialog::Accepted) return;
    lastFolder_ = dialog.directory().path();
    platform::FilePaths paths;
    for (const QUrl& url : dialog.selectedUrls()) {
        if (const auto path = platform::FilePath::fromUrl(url)) paths << *path;
    }
    sendFlow_->chooseReceiverAndSend(paths);
}

void AppDelegate::start()
{
    if (server_) {
        server_->startService();
        return;
    }
    createServer();
    if (server_) {
        server_->setVisible(control_->visible());
        showPairingCode();
    } else {
        giveUpService();
    }
}

void AppDelegate::stop()
{
    if (server_) server_->stopService();
}

void AppDelegate::setVisible(bool visible)
{
    if (server_) server_->setVisible(visible);
}

void AppDelegate::rebind(const QString& reason)
{
    if (server_) server_->rebindAfterNetworkChange(reason);
}

void AppDelegate::startDiscovery()
{
    deviceDiscovery_.start();
}

void AppDelegate::stopDiscovery()
{
    deviceDiscovery_.stop();
}

void AppDelegate::cancelSend()
{
    sendFlow_->cancel();
}

void AppDelegate::refreshPairingCode()
{
    if (!panel_ || !server_) return;
    panel_->setPairingCode(qr(ferrylanePairingLink(ferrylaneLocalHostForURL(), port,
                                  server_->sessionKeyB64(), ferrylaneDeviceSuffix()),
        1));
}

} // namespace ferrylane
