#include "app/widgets/PaintedButton.h"

#include <QKeyEvent>

namespace ferrylane {

PaintedButton::PaintedButton(QWidget* parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
}

void PaintedButton::keyPressEvent(QKeyEvent* event)
{
    if (!pressedByEnter(*this, *event)) QAbstractButton::keyPressEvent(event);
}

bool pressedByEnter(QAbstractButton& button, const QKeyEvent& event)
{
    const bool isEnter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (!isEnter) return false;
    // A key held down must not press again and again.
    if (!event.isAutoRepeat()) button.click();
    return true;
}

} // namespace ferrylane
