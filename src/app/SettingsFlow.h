#pragma once

#include "app/InfoPanel.h"
#include "app/ServiceControl.h"
#include "transferlog/TransferLogKeeper.h"

#include <QPointer>

#include <vector>

namespace ferrylane {

/// Info and settings, and the housekeeping: the device's name, the receive folder, the transfer
/// log, feedback, reset and restart. On the main thread.
class SettingsFlow {
public:
    /// All references must outlive this.
    struct Collaborators {
        ServiceControl& control;
        TransferLogKeeper& transferLog;
        /// Tells something, and returns when it has been read.
        std::function<void(const QString& title, const QString& text)> alert;
        std::function<void()> showDevices;
        /// The device has another name.
        std::function<void()> deviceRenamed;
        /// Ends what is being transferred, and the service for good.
        std::function<void()> endTransfers;
    };

    explicit SettingsFlow(Collaborators collaborators);
    /// Closes its windows.
    ~SettingsFlow();
    SettingsFlow(const SettingsFlow&) = delete;
    SettingsFlow& operator=(const SettingsFlow&) = delete;

    /// A new window each time, with what holds then.
    void showInfo();
    void nameThisDevice(QWidget* parent);
    /// The folder for received files.
    void openFolder() const;
    /// The default one, whatever the settings say.
    void openDestination() const;
    void restartApp();

private:
    void addPanel(const InfoPanel::State& state);
    [[nodiscard]] InfoPanel::Intents intents();
    void chooseReceiveFolder();
    void keepTransfers(bool keepsAll);
    void showFeedback();
    void resetFerrylane();
    /// False, with a line in the log, when the program cannot be started again.
    [[nodiscard]] static bool relaunch();

    Collaborators with_;
    std::vector<QPointer<InfoPanel>> panels_; ///< null when they have been closed
};

} // namespace ferrylane
