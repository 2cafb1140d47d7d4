#pragma once

#include <QAbstractButton>

namespace ferrylane {

/// What the buttons that draw themselves have in common: they are reached by the Tab key, change
/// under the pointer, and Enter presses them as the blank does.
///
/// Main thread.
class PaintedButton : public QAbstractButton {
public:
    explicit PaintedButton(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// Presses the button when the event is an Enter key going down; false for any other.
[[nodiscard]] bool pressedByEnter(QAbstractButton& button, const QKeyEvent& event);

} // namespace ferrylane
