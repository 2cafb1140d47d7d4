#pragma once

#include <QWidget>

#include <functional>

namespace ferrylane {

class FerrylaneActionButton;
class MiddleElidedLabel;
class ThinProgressBar;

/// The floating window that shows the file being received: frameless, above the others, in the top
/// right corner of the main screen. It never has the focus, so that nobody's typing lands in it;
/// without a mouse, the switch of the main panel ends a transfer.
///
/// Main thread. 340 x 112 points (see Appearance.h). On Wayland the compositor alone decides where
/// it stands and what it covers.
class TransferHUD final : public QWidget {
public:
    explicit TransferHUD(std::function<void()> onStop);

    /// `percent` is 0 to 100.
    void setTransfer(const QString& fileName, double percent, const QString& status);
    /// Places the window and shows it above the others without activating it.
    void present();

    /// Where a window of this size stands: 18 points from the top and right of the usable area.
    [[nodiscard]] static QPoint cornerOf(const QRect& usableArea, const QSize& window);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void addTexts();
    void addControls(std::function<void()> onStop);

    MiddleElidedLabel* transferHUDTitle_ = nullptr;
    MiddleElidedLabel* transferHUDStatus_ = nullptr;
    ThinProgressBar* transferHUDProgress_ = nullptr;
};

} // namespace ferrylane
