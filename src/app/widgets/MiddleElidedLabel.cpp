#include "app/widgets/MiddleElidedLabel.h"

#include "app/widgets/Appearance.h"
#include "core/Text.h"

#include <QEvent>
#include <QPainter>
#include <QToolTip>

namespace ferrylane {

MiddleElidedLabel::MiddleElidedLabel(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void MiddleElidedLabel::setText(const QString& text)
{
    QLabel::setText(textForWindow(text));
}

QString MiddleElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

QSize MiddleElidedLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

bool MiddleElidedLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || shownText() == text()) return QLabel::event(event);
    QToolTip::showText(toolTipPosition(*event), toolTipText(text()), this);
    return true;
}

void MiddleElidedLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(
        contentsRect(), static_cast<int>(alignment() | Qt::TextSingleLine), shownText());
}

} // namespace ferrylane
