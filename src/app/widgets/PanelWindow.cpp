#include "app/widgets/PanelWindow.h"

#include <QKeyEvent>
#include <QLabel>
#include <QScreen>

namespace ferrylane {

void setTextLook(QWidget& widget, const TextLook& look)
{
    widget.setFont(textFont(look.points, look.weight));
    setTextColor(widget, look.color);
}

QLabel* addText(QWidget& parent, const QString& text, const TextLook& look)
{
    auto* const label = new QLabel(text, &parent);
    label->setTextFormat(Qt::PlainText);
    setTextLook(*label, look);
    return label;
}

PanelWindow::PanelWindow(const QString& title, QSize size)
    : QWidget(nullptr,
        Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
            | Qt::WindowCloseButtonHint)
    , points_(size)
{
    setWindowTitle(title);
    setPalette(lightPalette());
    setFixedSize(scaled(size));
}

void PanelWindow::present()
{
    if (!isVisible()) move(screen()->availableGeometry().center() - rect().center());
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void PanelWindow::placeHere(QWidget& widget, const Place& where) const
{
    place(widget, where, points_.height());
}

void PanelWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace ferrylane
