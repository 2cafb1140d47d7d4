#include "app/widgets/SwitchButton.h"

#include "app/widgets/Appearance.h"

#include <QPainter>

namespace ferrylane {

namespace {

constexpr QSize switchSize(54, 30);
// Room for the focus ring around the track.
constexpr double knobMargin = 3;
constexpr double knobGap = 2;

QColor trackColor(const SwitchButton& button)
{
    const QColor color = button.isChecked() ? colors::blue : colors::switchOff;
    if (!button.isEnabled()) return color.lighter(140);
    return button.isDown() ? color.darker(115) : color;
}

} // namespace

SwitchButton::SwitchButton(QWidget* parent) : PaintedButton(parent)
{
    setCheckable(true);
}

QSize SwitchButton::sizeHint() const
{
    return scaled(switchSize);
}

void SwitchButton::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double inset = scaled(knobMargin);
    const QRectF track = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    painter.setBrush(trackColor(*this));
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);

    const double gap = scaled(knobGap);
    QRectF knob = track.adjusted(gap, gap, -gap, -gap);
    knob.setWidth(knob.height());
    if (isChecked()) knob.moveRight(track.right() - gap);
    painter.setBrush(Qt::white);
    painter.drawEllipse(knob);
    drawFocusRing(painter, *this, switchSize.height() / 2.0);
}

} // namespace ferrylane
