#pragma once

#include "app/windows/TransferTexts.h"
#include "platform/Files.h"

#include <QWidget>

#include <array>

class QLabel;
class QMenu;

namespace ferrylane {

class FerrylaneHoverLabel;
class MiddleElidedLabel;
class QRCodeButton;
class SwitchButton;
class ThinProgressBar;

/// The main window: this device with its pairing code, the place to drop files, and the recent
/// transfers. It shows what it is told and reports what people do; it decides nothing.
/// 318 x 555 points and not resizable; a point is a pixel at a text scale of 100 %
/// and grows with it. Closing hides the window, and showing it again shows it as it was left.
/// Where there is no tray, nothing else would bring the window back: a close that came from the
/// window system minimises it instead.
class MainPanel final : public QWidget {
    Q_OBJECT

public:
    MainPanel();

    /// As setWindowTitle(), which would take "[*]" in a file name for a mark of its own.
    void setTitle(const QString& title);
    void setDeviceName(const QString& name);
    /// One pixel a module, without a quiet zone: the card around it is white. Null shows none.
    void setPairingCode(const QImage& code);
    /// The tool tip says more about the state and may be empty.
    void setServiceState(bool isOn, const QString& toolTip);
    void setSendStatus(const QString& text, bool isShown);
    /// 0 to 100.
    void setSendProgress(double percent, bool isShown);
    /// Hidden while empty.
    void setReceiveStatus(const QString& text);
    void setHistory(const std::array<HistoryRow, historyRowCount>& rows);
    /// Also opens by a right-click here; its shortcuts work while this window has the focus. The
    /// menu must outlive the panel or be taken away with null.
    void setContextMenu(QMenu* menu);
    /// Shows, unfolds and activates; in the middle of the screen the first time.
    void present();

Q_SIGNALS:
    // What people ask for.
    void settingsRequested();
    void deviceNameRequested();
    void qrCodeRequested();
    void receivedFilesRequested();
    void fileChoiceRequested();
    /// The switch was turned by hand; setServiceState() does not report.
    void serviceSwitched(bool isOn);
    /// Dropped files without the folders among them; may be empty.
    void filesDropped(const platform::FilePaths& paths);

protected:
    void closeEvent(QCloseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void addHeader();
    void addDeviceCard();
    void addServiceSwitch(QWidget& card);
    void addSendCard();
    void addDropView(QWidget& card);
    void addHistoryCard();
    void addReceiveStatus();

    QMenu* menu_ = nullptr;
    bool wasCentred_ = false;
    FerrylaneHoverLabel* deviceName_ = nullptr;
    QRCodeButton* mainQRCodeButton_ = nullptr;
    QLabel* serviceStateText_ = nullptr;
    SwitchButton* serviceSwitch_ = nullptr;
    MiddleElidedLabel* sendStatusLabel_ = nullptr;
    ThinProgressBar* sendProgressBar_ = nullptr;
    QLabel* progressStatusLabel_ = nullptr;
    std::array<MiddleElidedLabel*, historyRowCount> historyLabels_{};
};

} // namespace ferrylane
