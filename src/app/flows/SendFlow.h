#pragma once

#include "app/flows/PairingFlow.h"
#include "app/windows/MainPanel.h"
#include "platform/Files.h"
#include "service/FerrylaneService.h"

#include <QObject>
#include <QTimer>

namespace ferrylane {

/// Sends files that the user has dropped or chosen: asks where to, has them sent, and shows in the
/// main panel how that gets on.
class SendFlow final : public QObject {
    Q_OBJECT

public:
    /// All must outlive this.
    SendFlow(FerrylaneService& service, PairingFlow& pairing, MainPanel& panel);

    void chooseFilesToSend();
    /// Asks for the receiver of these files and sends them. Folders are left out.
    void chooseReceiverAndSend(const platform::FilePaths& paths);
    /// Sends to the selected phone.
    void sendFilesToPairedPhone(const platform::FilePaths& files);

private:
    void show(const TransferState& state);
    void hide();

    FerrylaneService& service_;
    PairingFlow& pairing_;
    MainPanel& panel_;
    QString lastFolder_; ///< where files were chosen
    QTimer hideTimer_;
};

} // namespace ferrylane
