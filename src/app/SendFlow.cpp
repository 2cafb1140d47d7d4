#include "app/SendFlow.h"

#include "app/TransferTexts.h"
#include "core/DeviceName.h"
#include "core/Text.h"
#include "pairing/PairedTargets.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace ferrylane {

namespace {

constexpr auto doneTime = std::chrono::milliseconds(1500);

} // namespace

SendFlow::SendFlow(Collaborators collaborators) : with_(std::move(collaborators))
{
    pendingClose_.setSingleShot(true);
    pendingClose_.setInterval(doneTime);
    pendingClose_.callOnTimeout([this] {
        with_.views.setSendProgress(0, false);
        with_.views.setSendStatus({}, false);
    });
}

void SendFlow::chooseReceiverAndSend(const platform::FilePaths& paths)
{
    const platform::FilePaths files = withoutFolders(paths);
    if (files.isEmpty()) return;
    const SendChoice choice = with_.views.chooseReceiver(sendQuestionText(files.size()),
        sendChoices(loadFerrylanePairedTargets(), with_.visibleNames(), ferrylaneDeviceSuffix()));

    const auto sendTo = [this, files](const FerrylanePairedTarget& target) {
        selectFerrylanePairedTarget(target);
        sendFilesToPairedPhone(files);
    };
    switch (choice.kind) {
    case SendChoice::Kind::sendTo:
        sendTo(*choice.target);
        return;
    case SendChoice::Kind::pair:
    case SendChoice::Kind::pairByCode:
        with_.pairDeviceThen(sendTo);
        return;
    case SendChoice::Kind::cancel:
        return;
    }
}

void SendFlow::sendFilesToPairedPhone(const platform::FilePaths& paths)
{
    const platform::FilePaths files = withoutFolders(paths);
    if (files.isEmpty()) return;
    const auto target = loadFerrylanePairedTarget();
    if (!target) {
        with_.views.alert(QStringLiteral("No paired phone"),
            QStringLiteral("Pair an Android device before sending files."));
    } else if (running_) {
        with_.views.alert(QStringLiteral("Transfer already running"),
            QStringLiteral("Wait for the current send to finish."));
    } else {
        start(files, *target);
    }
}

void SendFlow::start(const platform::FilePaths& files, const FerrylanePairedTarget& target)
{
    pendingClose_.stop();
    std::unique_ptr<FerrylaneV4Sender> owned;
    try {
        owned = std::make_unique<FerrylaneV4Sender>(with_.network, ferrylaneDeviceSuffix());
    } catch (const std::system_error& noThread) {
        failed(SendError::network(noThread.code()));
        return;
    }
    auto* const sender = owned.get();
    running_ = Send{files, target, std::move(owned)};
    QObject::connect(sender, &FerrylaneV4Sender::waiting, sender, [this] {
        with_.views.setSendStatus(
            QStringLiteral("Device transferring \u2014 waiting until it finishes\u2026"), true);
    });
    QObject::connect(sender, &FerrylaneV4Sender::progressed, sender,
        [this](const auto& progress) { showProgress(progress); });
    QObject::connect(sender, &FerrylaneV4Sender::completed, sender,
        [this](const auto& result) { completed(result); });
    with_.setOutboundBusy(true);
    with_.views.setSendProgress(0, true);
    with_.views.setSendStatus(connectingText(target.name), true);
    sender->send(files, target);
}

void SendFlow::showProgress(const FerrylaneV4Sender::Progress& progress)
{
    with_.views.setSendProgress(progress.fraction * 100, true);
    with_.views.setSendStatus(sendingText(progress.fileIndex, progress.fileCount, progress.fileName,
                                  progress.fraction, progress.speed),
        true);
}

void SendFlow::cancel()
{
    // The completion, which comes, forgets the sender.
    if (running_) running_->outboundSender->cancel();
}

void SendFlow::cancelAndWait()
{
    if (!running_) return;
    // Without its sender nothing else completes it.
    running_->outboundSender = nullptr;
    completed(SendError::stopped());
}

void SendFlow::completed(const Result& result)
{
    Send send = *std::exchange(running_, std::nullopt);
    // Not destroyed here: this runs within one of its signals.
    if (auto* const sender = send.outboundSender.release()) sender->deleteLater();
    with_.setOutboundBusy(false);
    const auto* const error = std::get_if<SendError>(&result);
    record(send, error ? QStringLiteral("Failed") : QStringLiteral("Completed"));
    if (error) {
        failed(*error);
    } else {
        succeeded(std::get<int>(result), send.target);
    }
}

void SendFlow::succeeded(int fileCount, const FerrylanePairedTarget& target)
{
    with_.views.setSendProgress(100, true);
    with_.views.setSendStatus(sentText(fileCount, target.name), true);
    pendingClose_.start();
}

void SendFlow::failed(const SendError& error)
{
    with_.views.setSendProgress(0, false);
    if (error.isStopped()) {
        with_.views.setSendStatus(QStringLiteral("Transfer stopped"), true);
        return;
    }
    // The phone's own words may be in it, of any length.
    const QString reason = textForWindow(error.description());
    with_.views.setSendStatus(QStringLiteral("Send failed: ") + reason, true);
    with_.views.alert(QStringLiteral("Transfer failed"), reason);
}

void SendFlow::record(const Send& send, const QString& result)
{
    for (const platform::FilePath& file : send.files) {
        with_.log({.direction = QStringLiteral("Sent"),
            .fileName = file.name(),
            .peer = send.target.name,
            .result = result,
            .size = file.size()});
    }
}

} // namespace ferrylane
