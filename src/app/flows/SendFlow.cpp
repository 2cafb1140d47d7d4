#include "app/flows/SendFlow.h"

#include "app/flows/ReceiverChooser.h"
#include "app/widgets/AskDialog.h"
#include "core/DeviceName.h"
#include "core/Text.h"
#include "pairing/PairedTargets.h"

#include <QFileDialog>

#include <chrono>

namespace ferrylane {

namespace {

constexpr auto doneTime = std::chrono::milliseconds(1500);

} // namespace

SendFlow::SendFlow(FerrylaneService& service, PairingFlow& pairing, MainPanel& panel)
    : service_(service), pairing_(pairing), panel_(panel)
{
    hideTimer_.setSingleShot(true);
    hideTimer_.callOnTimeout(this, &SendFlow::hide);
    connect(&service_, &FerrylaneService::sendChanged, this, &SendFlow::show);
    connect(&panel_, &MainPanel::fileChoiceRequested, this, &SendFlow::chooseFilesToSend);
    connect(&panel_, &MainPanel::filesDropped, this, &SendFlow::chooseReceiverAndSend);
}

void SendFlow::chooseFilesToSend()
{
    QFileDialog dialog(&panel_, QStringLiteral("Choose files to send"), lastFolder_);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setLabelText(QFileDialog::Accept, QStringLiteral("Send"));
    if (dialog.exec() != QDialog::Accepted) return;
    lastFolder_ = dialog.directory().path();
    platform::FilePaths paths;
    for (const QUrl& url : dialog.selectedUrls()) {
        if (const auto path = platform::FilePath::fromUrl(url)) paths << *path;
    }
    chooseReceiverAndSend(paths);
}

void SendFlow::chooseReceiverAndSend(const platform::FilePaths& paths)
{
    const platform::FilePaths files = platform::withoutFolders(paths);
    if (files.isEmpty()) return;
    const SendChoice choice = askForReceiver(&panel_, sendQuestionText(files.size()),
        sendChoices(loadFerrylanePairedTargets(), service_.availableDeviceNames(),
            ferrylaneDeviceSuffix()));

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
        pairing_.pairDeviceThen(sendTo);
        return;
    case SendChoice::Kind::cancel:
        return;
    }
}

void SendFlow::sendFilesToPairedPhone(const platform::FilePaths& files)
{
    const auto target = loadFerrylanePairedTarget();
    if (!target) {
        tell(&panel_, QStringLiteral("No paired phone"),
            QStringLiteral("Pair an Android device before sending files."));
    } else if (service_.isSending()) {
        tell(&panel_, QStringLiteral("Transfer already running"),
            QStringLiteral("Wait for the current send to finish."));
    } else {
        service_.send(files, *target);
    }
}

void SendFlow::show(const TransferState& state)
{
    using Stage = TransferState::Stage;
    const bool isDone = state.stage == Stage::completed;
    panel_.setSendProgress(isDone ? 100 : state.fraction * 100, isDone || state.isUnderWay());
    panel_.setSendStatus(sendStatusText(state), true);
    hideTimer_.stop();
    if (isDone) hideTimer_.start(doneTime);
    if (state.stage == Stage::failed) {
        tell(&panel_, QStringLiteral("Transfer failed"), textForWindow(state.reason));
    }
}

void SendFlow::hide()
{
    panel_.setSendProgress(0, false);
    panel_.setSendStatus({}, false);
}

} // namespace ferrylane
