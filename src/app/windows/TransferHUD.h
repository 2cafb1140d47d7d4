#pragma once

#include "core/TransferState.h"

#include <QTimer>
#include <QWidget>

namespace ferrylane {

class MiddleElidedLabel;
class ThinProgressBar;

/// The floating window that shows the file being received: frameless, above the others, in the top
/// right corner of the main screen. It never has the focus, so that nobody's typing lands in it;
/// without a mouse, the switch of the main panel ends a transfer.
/// 340 x 112 points (see Appearance.h). On Wayland the compositor alone decides where
/// it stands and what it covers.
class TransferHUD final : public QWidget {
    Q_OBJECT

public:
    TransferHUD();

    /// Shows the window above the others without activating it.
    void begin(const TransferState& state);
    void setState(const TransferState& state);
    /// Says that the file has come, and closes the window soon. Does nothing while it is closed.
    void finish(const QString& fileName);
    void stop();

    /// Where a window of this size stands: 18 points from the top and right of the usable area.
    [[nodiscard]] static QPoint cornerOf(const QRect& usableArea, const QSize& window);

Q_SIGNALS:
    void stopRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void addTexts();
    void addControls();
    void setTransfer(const QString& fileName, double percent, const QString& status);

    MiddleElidedLabel* transferHUDTitle_ = nullptr;
    MiddleElidedLabel* transferHUDStatus_ = nullptr;
    ThinProgressBar* transferHUDProgress_ = nullptr;
    QTimer closeTimer_;
};

} // namespace ferrylane
