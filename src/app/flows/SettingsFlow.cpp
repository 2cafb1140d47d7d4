#include "app/flows/SettingsFlow.h"

#include "app/flows/Maintenance.h"
#include "app/widgets/Appearance.h"
#include "app/widgets/AskDialog.h"
#include "app/widgets/Buttons.h"
#include "app/windows/InfoPanel.h"
#include "core/DeviceName.h"
#include "core/Log.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "platform/Files.h"
#include "platform/Process.h"
#include "platform/UserFolders.h"

#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QUrl>

#include <optional>

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

/// False, with a line in the log, when the program cannot be started again.
bool relaunch()
{
    const auto failure = platform::relaunchSoon();
    if (failure) flLog(QStringLiteral("Could not restart Ferrylane: ") + *failure);
    return !failure;
}

/// The name as it was typed, empty for the default one; none when it stays as it is.
std::optional<QString> askForDeviceName(QWidget* parent)
{
    enum Button { save = 1, useDefault };
    AskDialog dialog(parent, QStringLiteral("Name this device"),
        QStringLiteral("Choose the device name shown to nearby Ferrylane devices."));
    auto* const name = new QLineEdit(ferrylaneDeviceSuffix());
    name->setMinimumWidth(scaled(QSize(280, 0)).width());
    name->setAccessibleName(QStringLiteral("Device name"));
    name->selectAll();
    dialog.addControl(*name);
    dialog.addButton(QStringLiteral("Save"));
    dialog.addButton(QStringLiteral("Use Default"));
    dialog.addButton(QStringLiteral("Cancel"));
    name->setFocus();
    const int button = dialog.exec();
    if (button == useDefault) return QString();
    const QString typed = typedDeviceName(name->text());
    return button == save && !typed.isEmpty() ? std::optional(typed) : std::nullopt;
}

/// What somebody wants to tell the maker.
struct Feedback {
    QString text;
    bool withDetails = false; ///< of this program, the system and the transfers
};

/// None when nothing is to be sent.
std::optional<Feedback> askForFeedback(QWidget* parent)
{
    AskDialog dialog(parent, QStringLiteral("Ferrylane feedback"),
        QStringLiteral("Write a feature request or report. Device details are optional."));
    auto* const text = new QPlainTextEdit;
    text->setFixedSize(scaled(QSize(390, 110)));
    text->setFont(textFont(13));
    text->setTabChangesFocus(true);
    text->setAccessibleName(QStringLiteral("Feedback"));
    dialog.addControl(*text);
    auto* const details = new QCheckBox(QStringLiteral("Include Mac version and transfer summary"));
    dialog.addControl(*details);
    dialog.addButton(QStringLiteral("Open email"));
    dialog.addButton(QStringLiteral("Cancel"));
    text->setFocus();
    if (dialog.exec() != 1) return std::nullopt;
    return Feedback{text->toPlainText(), details->isChecked()};
}

} // namespace

SettingsFlow::SettingsFlow(FerrylaneService& service, MainPanel& panel)
    : service_(service), panel_(panel)
{
    connect(&panel_, &MainPanel::settingsRequested, this, &SettingsFlow::showInfo);
    connect(&panel_, &MainPanel::deviceNameRequested, this, &SettingsFlow::nameThisDevice);
    connect(&panel_, &MainPanel::receivedFilesRequested, this, &SettingsFlow::openDestination);
}

void SettingsFlow::showInfo()
{
    auto* const panel = new InfoPanel({
        .deviceName = ferrylaneDeviceSuffix(),
        .version = versionText(),
        .receiveFolder = receiveDir(),
        .autoOffSeconds = userSettings().integer(ferrylaneAutoOffSecondsKey),
        .isVisible = service_.visible(),
        .isServiceRunning = service_.serviceRunning(),
        .keepsAllTransfers = userSettings().boolean(ferrylaneTransferLogContinuousKey, false),
    });
    panel->setAttribute(Qt::WA_DeleteOnClose);
    connect(this, &QObject::destroyed, panel, [panel] { delete panel; });
    connectPanel(*panel);
    panel->present();
    using Shown = std::pair<QString, QStringList>;
    service_.transferLog().read(
        panel,
        [](const QList<FerrylaneTransferLogEntry>& entries) {
            return Shown(transferSummary(entries), ferrylaneTransferLogLines(entries));
        },
        [panel](const Shown& shown) { panel->setTransfers(shown.first, shown.second); });
}

void SettingsFlow::connectPanel(InfoPanel& panel)
{
    connect(&panel, &InfoPanel::folderChoiceRequested, this, &SettingsFlow::chooseReceiveFolder);
    connect(&panel, &InfoPanel::autoOffChosen, &service_, &FerrylaneService::setAutoOffSeconds);
    connect(&panel, &InfoPanel::visibilitySwitched, &service_, &FerrylaneService::setVisible);
    connect(&panel, &InfoPanel::devicesRequested, this, &SettingsFlow::devicesRequested);
    connect(&panel, &InfoPanel::transfersKept, this, &SettingsFlow::keepTransfers);
    connect(&panel, &InfoPanel::pageRequested, this, openPage);
    connect(&panel, &InfoPanel::feedbackRequested, this, &SettingsFlow::giveFeedback);
    connect(&panel, &InfoPanel::deviceNameRequested, this, &SettingsFlow::nameThisDevice);
    connect(&panel, &InfoPanel::receivedFilesRequested, this, &SettingsFlow::openFolder);
    connect(&panel, &InfoPanel::resetRequested, this, &SettingsFlow::resetFerrylane);
}

void SettingsFlow::nameThisDevice()
{
    const auto name = askForDeviceName(QApplication::activeWindow());
    if (!name) return;
    if (name->isEmpty()) {
        userSettings().remove(ferrylaneDeviceNameKey);
    } else {
        userSettings().set(ferrylaneDeviceNameKey, *name);
    }
    service_.deviceRenamed();
    panel_.setDeviceName(ferrylaneDeviceSuffix());
    panel_.present();
}

void SettingsFlow::chooseReceiveFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(QApplication::activeWindow(),
        QStringLiteral("Choose where Ferrylane saves received files"), receiveDir());
    if (folder.isEmpty()) return;
    if (const QString problem = receiveFolderProblem(folder); !problem.isEmpty()) {
        tell(&panel_, QStringLiteral("Ferrylane cannot save files there"),
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
    if (!keepsAll) service_.transferLog().trim();
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

void SettingsFlow::giveFeedback()
{
    const auto feedback = askForFeedback(QApplication::activeWindow());
    if (!feedback) return;
    if (!feedback->withDetails) {
        openPage(feedbackLink(feedback->text));
        return;
    }
    service_.transferLog().read(
        this, [](const QList<FerrylaneTransferLogEntry>& entries) { return entries.size(); },
        [text = feedback->text](
            qsizetype count) { openPage(feedbackLink(text + feedbackDetails(count))); });
}

void SettingsFlow::resetFerrylane()
{
    const bool isMeant = askWhether(QApplication::activeWindow(),
        QStringLiteral("Reset Ferrylane?"),
        QStringLiteral("This removes settings, transfer logs, device name, and all pairings from "
                       "this Mac. Received files are not deleted."),
        QStringLiteral("Reset"));
    if (!isMeant) return;
    service_.end();
    removeSettingsAndPairings();
    service_.transferLog().clear();
    if (!relaunch()) {
        tell(&panel_, QStringLiteral("Ferrylane has been reset"),
            QStringLiteral("It could not start again by itself and ends now. Start it anew."));
    }
    QApplication::quit();
}

void SettingsFlow::restartApp()
{
    if (relaunch()) {
        QApplication::quit();
    } else {
        tell(&panel_, QStringLiteral("Could not restart Ferrylane"),
            QStringLiteral("It goes on as it is. Quit it and start it anew."));
    }
}

} // namespace ferrylane
