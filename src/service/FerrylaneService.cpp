#include "service/FerrylaneService.h"

#include "core/DeviceName.h"
#include "core/LocalAddresses.h"
#include "core/Log.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "protocol/PairingLink.h"

#include <algorithm>
#include <utility>

namespace ferrylane {

using namespace std::chrono_literals;
using Stage = TransferState::Stage;

namespace {

// Changes come in bursts; the last one counts.
constexpr auto networkSettlingTime = 1250ms;
constexpr auto wakeSettlingTime = 1500ms;
// The new address may come a little after the new path.
constexpr auto secondRefreshDelay = 1s;
// A damaged setting must not leave the range of a timer, which is 24 days.
constexpr qint64 longestAutoOff = 20LL * 24 * 3600;

} // namespace

FerrylaneService::FerrylaneService()
    : network_("ferrylane.conn")
    , sleep_(QStringLiteral("Ferrylane"), QStringLiteral("Files are being transferred"))
    , visible_(userSettings().boolean(ferrylaneVisibleKey, true))
    , serviceRunning_(userSettings().boolean(ferrylaneServiceRunningKey, true))
{
    for (QTimer* const timer : {&autoOffTimer_, &pendingNetworkRebind_, &secondRefresh_}) {
        timer->setSingleShot(true);
    }
    autoOffTimer_.callOnTimeout(this, [this] { switchTo(false); });
    secondRefresh_.callOnTimeout(this, &FerrylaneService::refreshPairingLink);
    connect(&sleep_, &platform::SystemSleep::didWake, this,
        [this] { scheduleNetworkRebind(QStringLiteral("system wake"), wakeSettlingTime); });
    connect(&deviceDiscovery_, &FerrylaneDeviceDiscovery::namesChanged, this,
        [this](const QStringList& names) {
            if (std::exchange(availableDeviceNames_, names) != names) {
                Q_EMIT availableDevicesChanged(names);
            }
        });
}

FerrylaneService::~FerrylaneService()
{
    end();
}

void FerrylaneService::begin()
{
    createServer();
    if (server_) server_->setVisible(visible_);
    if (serviceRunning_) {
        startDiscovery();
    } else if (server_) {
        server_->stopService();
    }
    watchNetworkPath();
    scheduleAutoOff();
    if (health_.isFaulty() && serviceRunning_) giveUpService();
}

void FerrylaneService::end()
{
    if (isSending()) {
        outboundSender_ = nullptr;
        sendCompleted(SendError::stopped());
    }
    if (server_) server_->end();
}

QString FerrylaneService::pairingLink() const
{
    if (!server_) return {};
    return ferrylanePairingLink(ferrylaneLocalHostForURL(), port, server_->sessionKeyB64());
}

// The switches.

void FerrylaneService::createServer()
{
    try {
        server_.emplace(network_, clock_);
    } catch (const std::system_error& error) {
        flLog(QStringLiteral("Could not start Ferrylane"), error.code());
        health_.set(platform::Transport::udp, error.code());
        return;
    }
    connect(&*server_, &HTTPServer::socketChanged, this, &FerrylaneService::socketChanged);
    const UploadReports* const uploads = &server_->uploads();
    connect(uploads, &UploadReports::started, this, [this](const TransferState& state) {
        setReceiving(true);
        Q_EMIT ferrylaneStarted(state);
    });
    connect(uploads, &UploadReports::progressed, this, [this](const TransferState& state) {
        // Not of one that has been stopped.
        if (isReceiving_) Q_EMIT ferrylaneProgress(state);
    });
    connect(uploads, &UploadReports::stored, this, &FerrylaneService::fileReceived);
    connect(uploads, &UploadReports::stopped, this, [this] {
        setReceiving(false);
        Q_EMIT ferrylaneStopped();
    });
}

void FerrylaneService::socketChanged(platform::Transport transport, const std::error_code& error)
{
    health_.set(transport, error);
    if (health_.isFaulty() && !health_.hasBeenReachable()) {
        giveUpService();
    } else {
        Q_EMIT serviceChanged();
    }
}

/// Off for now, which is not kept, and on again with the next launch.
void FerrylaneService::giveUpService()
{
    serviceRunning_ = false;
    // Phones are looked for all the same: files can be sent to them.
    if (server_) server_->stopService();
    scheduleAutoOff();
    Q_EMIT serviceChanged();
    Q_EMIT serviceFailed(health_.faultText() + QStringLiteral("\n\n") + health_.adviceText());
}

void FerrylaneService::setServiceRunning(bool on)
{
    health_.reset();
    switchTo(on);
}

void FerrylaneService::switchTo(bool on)
{
    serviceRunning_ = on;
    userSettings().set(ferrylaneServiceRunningKey, on);
    if (on) {
        if (server_) {
            server_->startService();
        } else {
            createServer();
            if (!server_) return giveUpService();
            server_->setVisible(visible_);
            Q_EMIT pairingLinkChanged(pairingLink());
        }
        startDiscovery();
    } else {
        if (outboundSender_) outboundSender_->cancel();
        deviceDiscovery_.stop();
        if (server_) server_->stopService();
    }
    scheduleAutoOff();
    Q_EMIT serviceChanged();
}

void FerrylaneService::setVisible(bool visible)
{
    visible_ = visible;
    userSettings().set(ferrylaneVisibleKey, visible);
    if (server_) server_->setVisible(visible);
}

void FerrylaneService::setAutoOffSeconds(qint64 seconds)
{
    userSettings().set(ferrylaneAutoOffSecondsKey, seconds);
    scheduleAutoOff();
}

void FerrylaneService::scheduleAutoOff()
{
    autoOffTimer_.stop();
    const qint64 seconds = userSettings().integer(ferrylaneAutoOffSecondsKey);
    if (!serviceRunning_ || seconds < 1) return;
    autoOffTimer_.start(std::chrono::seconds(std::min(seconds, longestAutoOff)));
}

void FerrylaneService::deviceRenamed()
{
    if (server_) server_->refreshAdvertisement();
}

// The network.

void FerrylaneService::startDiscovery()
{
    deviceDiscovery_.start(server_ ? &server_->publisher() : nullptr);
}

/// Without a monitor, a network that changes is not noticed.
void FerrylaneService::watchNetworkPath()
{
    try {
        networkPathMonitor_ = std::make_unique<platform::NetworkPathMonitor>();
    } catch (const std::system_error& error) {
        return flLog(QStringLiteral("Could not watch the network"), error.code());
    }
    connect(networkPathMonitor_.get(), &platform::NetworkPathMonitor::pathChanged, this,
        &FerrylaneService::networkPathChanged);
}

void FerrylaneService::networkPathChanged(bool isSatisfied)
{
    if (!isSatisfied) {
        hasStartedWithoutPath_ = hasStartedWithoutPath_ || !hasInitialNetworkPath_;
    } else if (std::exchange(hasInitialNetworkPath_, true)) {
        scheduleNetworkRebind(QStringLiteral("network path/IP change"), networkSettlingTime);
    } else if (hasStartedWithoutPath_) {
        // The sockets are open to it already; only the address is new.
        refreshPairingLink();
        secondRefresh_.start(secondRefreshDelay);
    }
}

void FerrylaneService::scheduleNetworkRebind(const QString& reason, std::chrono::milliseconds delay)
{
    if (!serviceRunning_) return;
    pendingNetworkRebind_.disconnect();
    pendingNetworkRebind_.callOnTimeout(this, [this, reason] { rebind(reason); });
    pendingNetworkRebind_.start(delay);
}

void FerrylaneService::rebind(const QString& reason)
{
    if (!serviceRunning_) return;
    if (server_) server_->rebindAfterNetworkChange(reason);
    deviceDiscovery_.stop();
    startDiscovery();
    refreshPairingLink();
    secondRefresh_.start(secondRefreshDelay);
}

void FerrylaneService::refreshPairingLink()
{
    if (!server_) return;
    Q_EMIT pairingLinkChanged(ferrylanePairingLink(
        ferrylaneLocalHostForURL(), port, server_->sessionKeyB64(), ferrylaneDeviceSuffix()));
}

// Receiving.

void FerrylaneService::fileReceived(const ReceivedFile& file)
{
    flLog(QStringLiteral("Received file: ") + file.name());
    setReceiving(false);
    transferLog_.append(
        {.direction = QStringLiteral("Received"), .fileName = file.name(), .size = file.size});
    Q_EMIT ferrylaneReceived(file);
}

void FerrylaneService::setReceiving(bool isReceiving)
{
    isReceiving_ = isReceiving;
    keepAwakeAsNeeded();
}

void FerrylaneService::stopCurrentTransfer()
{
    if (server_) server_->cancelActiveTransfer();
    setReceiving(false);
    flLog(QStringLiteral("Transfer stopped by user"));
    Q_EMIT ferrylaneStopped();
}

void FerrylaneService::keepAwakeAsNeeded()
{
    if (isReceiving_ || isSending()) {
        sleep_.inhibit();
    } else {
        sleep_.release();
    }
}

// Sending.

void FerrylaneService::send(const platform::FilePaths& files, const FerrylanePairedTarget& target)
{
    sentFiles_ = files;
    sending_ = {.peer = target.name, .fileCount = static_cast<int>(files.size())};
    try {
        outboundSender_ = std::make_unique<FerrylaneV4Sender>(ferrylaneDeviceSuffix());
    } catch (const std::system_error& noThread) {
        sending_.reason = SendError::network(noThread.code()).description();
        setSending(Stage::failed);
        return;
    }
    FerrylaneV4Sender* const sender = outboundSender_.get();
    connect(sender, &FerrylaneV4Sender::waiting, this, [this] { setSending(Stage::waiting); });
    connect(sender, &FerrylaneV4Sender::progressed, this, &FerrylaneService::sendProgressed);
    connect(sender, &FerrylaneV4Sender::completed, this, &FerrylaneService::sendCompleted);
    setSending(Stage::connecting);
    sender->send(files, target);
}

void FerrylaneService::setSending(Stage stage)
{
    sending_.stage = stage;
    // While busy, phones are refused.
    if (server_) server_->setOutboundBusy(isSending());
    keepAwakeAsNeeded();
    Q_EMIT sendChanged(sending_);
}

void FerrylaneService::sendProgressed(const FerrylaneV4Sender::Progress& progress)
{
    sending_.fileName = progress.fileName;
    sending_.fileIndex = progress.fileIndex;
    sending_.fraction = progress.fraction;
    sending_.speed = progress.speed;
    setSending(Stage::running);
}

void FerrylaneService::sendCompleted(const FerrylaneV4Sender::Result& result)
{
    // Not destroyed at once: this runs within one of its signals.
    QTimer::singleShot(0, this, [this] {
        if (!isSending()) outboundSender_ = nullptr;
    });
    const auto* const error = std::get_if<SendError>(&result);
    for (const platform::FilePath& file : std::exchange(sentFiles_, {})) {
        transferLog_.append({.direction = QStringLiteral("Sent"),
            .fileName = file.name(),
            .peer = sending_.peer,
            .result = error ? QStringLiteral("Failed") : QStringLiteral("Completed"),
            .size = file.size()});
    }
    if (error && !error->isStopped()) sending_.reason = error->description();
    setSending(!error ? Stage::completed : error->isStopped() ? Stage::stopped : Stage::failed);
}

} // namespace ferrylane
