#include "app/SettingsFlow.h"

#include "app/AskDialog.h"
#include "app/DeviceNameDialog.h"
#include "app/FeedbackDialog.h"
#include "app/InfoTexts.h"
#include "app/Maintenance.h"
#include "app/MakerPages.h"
#include "core/DeviceName.h"
#include "core/Log.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "platform/Files.h"
#include "platform/Relaunch.h"
#include "platform/UserFolders.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QUrl>

#include <utility>

namespace ferrylane {

namespace {

void openPage(const QString& address)
{
    QDesktopServices::openUrl(QUrl(address));
}

void openLocalFolder(const QString& folder)
{
    static_cast<void>(platform::createFolders(folder));
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

} // namespace

SettingsFlow::SettingsFlow(Collaborators collaborators) : with_(std::move(collaborators)) {}

SettingsFlow::~SettingsFlow()
{
    for (const QPointer<InfoPanel>& panel : panels_) {
        delete panel;
    }
}

void SettingsFlow::showInfo()
{
    addPanel({
        .deviceName = ferrylaneDeviceSuffix(),
        .version = versionText(),
        .receiveFolder = receiveDir(),
        .autoOffSeconds = userSettings().integer(ferrylaneAutoOffSecondsKey),
        .isVisible = with_.control.visible(),
        .isServiceRunning = with_.control.serviceRunning(),
        .keepsAllTransfers = userSettings().boolean(ferrylaneTransferLogContinuousKey, false),
    });
}

void SettingsFlow::addPanel(const InfoPanel::State& state)
{
    std::erase_if(panels_, [](const QPointer<InfoPanel>& panel) { return panel.isNull(); });
    const QPointer<InfoPanel> panel = new InfoPanel(state, intents());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panels_.push_back(panel);
    panel->present();
    with_.transferLog.read([panel](const QList<FerrylaneTransferLogEntry>& entries) {
        return [panel, summary = transferSummary(entries),
                   lines = ferrylaneTransferLogLines(entries)] {
            if (panel) panel->setTransfers(summary, lines);
        };
    });
}

InfoPanel::Intents SettingsFlow::intents()
{
    return {
        .chooseFolder = [this] { chooseReceiveFolder(); },
        .autoOffChosen = [this](qint64 seconds) { with_.control.setAutoOffSeconds(seconds); },
        .visibilitySwitched = [this](bool isVisible) { with_.control.setVisible(isVisible); },
        .showDevices = with_.showDevices,
        .transfersKept = [this](bool keepsAll) { keepTransfers(keepsAll); },
        .openWebsite = [] { openPage(maker::productPage); },
        .openPrivacy = [] { openPage(maker::privacyPage); },
        .openSupport = [] { openPage(maker::supportPage); },
        .giveFeedback = [this] { showFeedback(); },
        .nameDevice = [this] { nameThisDevice(QApplication::activeWindow()); },
        .openFolder = [this] { openFolder(); },
        .reset = [this] { resetFerrylane(); },
    };
}

void SettingsFlow::nameThisDevice(QWidget* parent)
{
    const auto answer = askForDeviceName(parent, ferrylaneDeviceSuffix());
    if (!answer) return;
    if (answer->usesDefault) {
        userSettings().remove(ferrylaneDeviceNameKey);
    } else {
        const QString name = typedDeviceName(answer->typed);
        if (name.isEmpty()) return;
        userSettings().set(ferrylaneDeviceNameKey, name);
    }
    with_.deviceRenamed();
}

void SettingsFlow::chooseReceiveFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(QApplication::activeWindow(),
        QStringLiteral("Choose where Ferrylane saves received files"), receiveDir());
    if (folder.isEmpty()) return;
    if (const QString problem = receiveFolderProblem(folder); !problem.isEmpty()) {
        with_.alert(QStringLiteral("Ferrylane cannot save files there"),
            QStringLiteral("%1: %2. Received files are still saved in %3.")
                .arg(folder, problem, receiveDir()));
        return;
    }
    userSettings().set(ferrylaneReceiveFolderKey, folder);
    showInfo();
}

void SettingsFlow::keepTransfers(bool keepsAll)
{
    userSettings().set(ferrylaneTransferLogContinuousKey, keepsAll);
    if (!keepsAll) with_.transferLog.trim();
    showInfo();
}

void SettingsFlow::openFolder() const
{
    openLocalFolder(receiveDir());
}

void SettingsFlow::openDestination() const
{
    openLocalFolder(platform::userDownloadsFolder() + QStringLiteral("/Ferrylane"));
}

void SettingsFlow::showFeedback()
{
    const auto feedback = askForFeedback(QApplication::activeWindow());
    if (!feedback) return;
    if (!feedback->withDetails) {
        openPage(feedbackLink(feedback->text));
        return;
    }
    with_.transferLog.read(
        [text = feedback->text](const QList<FerrylaneTransferLogEntry>& entries) {
            const QString link = feedbackLink(text + feedbackDetails(entries.size()));
            return [link] { openPage(link); };
        });
}

void SettingsFlow::resetFerrylane()
{
    const bool isMeant = askWhether(QApplication::activeWindow(),
        QStringLiteral("Reset Ferrylane?"),
        QStringLiteral("This removes settings, transfer logs, device name, and all pairings from "
                       "this Mac. Received files are not deleted."),
        QStringLiteral("Reset"));
    if (!isMeant) return;
    with_.endTransfers();
    removeSettingsAndPairings();
    with_.transferLog.clear();
    if (!relaunch()) {
        with_.alert(QStringLiteral("Ferrylane has been reset"),
            QStringLiteral("It could not start again by itself and ends now. Start it anew."));
    }
    QApplication::quit();
}

void SettingsFlow::restartApp()
{
    if (relaunch()) {
        QApplication::quit();
    } else {
        with_.alert(QStringLiteral("Could not restart Ferrylane"),
            QStringLiteral("It goes on as it is. Quit it and start it anew."));
    }
}

bool SettingsFlow::relaunch()
{
    const auto failure = platform::relaunchSoon();
    if (failure) flLog(QStringLiteral("Could not restart Ferrylane: ") + *failure);
    return !failure;
}

} // namespace ferrylane
