#include "app/Card.h"

#include "app/Appearance.h"

#include <QPainter>

namespace ferrylane {

Card::Card(QWidget* parent) : QWidget(parent) {}

void Card::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFrame(painter, QRectF(rect()), {colors::card, colors::cardBorder, 1.2, 11});
}

} // namespace ferrylane
