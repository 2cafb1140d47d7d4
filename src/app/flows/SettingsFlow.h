#pragma once

#include "app/windows/InfoPanel.h"
#include "app/windows/MainPanel.h"
#include "service/FerrylaneService.h"

#include <QObject>

namespace ferrylane {

/// Info and settings, and the housekeeping: the device's name, the receive folder, the transfer
/// log, feedback, reset and restart.
class SettingsFlow final : public QObject {
    Q_OBJECT

public:
    /// Both must outlive this.
    SettingsFlow(FerrylaneService& service, MainPanel& panel);

    /// A new window each time, with what holds then.
    void showInfo();
    void nameThisDevice();
    /// Opens the folder for received files.
    void openFolder() const;
    /// The default one, whatever the settings say.
    void openDestination() const;
    void restartApp();

Q_SIGNALS:
    void devicesRequested();

private:
    void connectPanel(InfoPanel& panel);
    void chooseReceiveFolder();
    void keepTransfers(bool keepsAll);
    void giveFeedback();
    void resetFerrylane();

    FerrylaneService& service_;
    MainPanel& panel_;
};

} // namespace ferrylane
