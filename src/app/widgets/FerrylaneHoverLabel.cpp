#include "app/widgets/FerrylaneHoverLabel.h"

#include "app/widgets/Appearance.h"
#include "core/Text.h"

#include <QEvent>
#include <QPainter>
#include <QToolTip>

namespace ferrylane {

namespace {

constexpr double focusRingRadius = 4;
// Between the text and the focus ring.
constexpr double labelMargin = 4;

} // namespace

FerrylaneHoverLabel::FerrylaneHoverLabel(std::function<void()> onClick, QWidget* parent)
    : PaintedButton(parent)
    , normalTextColor(palette().color(QPalette::WindowText))
    , hoverTextColor(palette().color(QPalette::Link))
{
    if (onClick) connect(this, &QAbstractButton::clicked, this, std::move(onClick));
}

void FerrylaneHoverLabel::setLabel(const QString& text)
{
    label_ = textForWindow(text);
    setAccessibleName(label_);
    updateGeometry();
    update();
}

QColor FerrylaneHoverLabel::textColor() const
{
    return isHovered_ ? hoverTextColor : normalTextColor;
}

QString FerrylaneHoverLabel::shownText() const
{
    const int room = width() - 2 * static_cast<int>(scaled(labelMargin));
    return fontMetrics().elidedText(label_, Qt::ElideMiddle, room);
}

QSize FerrylaneHoverLabel::sizeHint() const
{
    const int around = 2 * static_cast<int>(scaled(labelMargin));
    return {fontMetrics().horizontalAdvance(label_) + around, fontMetrics().height() + around / 2};
}

bool FerrylaneHoverLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || shownText() == label_) {
        return PaintedButton::event(event);
    }
    QToolTip::showText(toolTipPosition(*event), toolTipText(label_), this);
    return true;
}

void FerrylaneHoverLabel::enterEvent(QEnterEvent* event)
{
    isHovered_ = isActiveWindow();
    PaintedButton::enterEvent(event);
}

void FerrylaneHoverLabel::leaveEvent(QEvent* event)
{
    isHovered_ = false;
    PaintedButton::leaveEvent(event);
}

void FerrylaneHoverLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(textColor());
    const QRect area = rect().adjusted(static_cast<int>(scaled(labelMargin)), 0, 0, 0);
    painter.drawText(area, static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine), shownText());
    drawFocusRing(painter, *this, focusRingRadius);
}

} // namespace ferrylane
