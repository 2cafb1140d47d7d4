#include "app/widgets/ThinProgressBar.h"

#include "app/widgets/Appearance.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ferrylane {

namespace {

// A bar of 314 points moves by less than a pixel of a 2x screen at each step.
constexpr int stepsPerPercent = 10;
constexpr double wholePercent = 100;

void drawBar(QPainter& painter, const QRectF& bar, const QColor& color)
{
    painter.setBrush(color);
    painter.drawRoundedRect(bar, bar.height() / 2, bar.height() / 2);
}

} // namespace

ThinProgressBar::ThinProgressBar(QWidget* parent) : QProgressBar(parent)
{
    setRange(0, static_cast<int>(wholePercent) * stepsPerPercent);
    setValue(0);
    setTextVisible(false);
}

void ThinProgressBar::setPercent(double percent)
{
    const double limited = std::isfinite(percent) ? std::clamp(percent, 0.0, wholePercent) : 0.0;
    setValue(static_cast<int>(std::lround(limited * stepsPerPercent)));
}

double ThinProgressBar::percent() const
{
    return static_cast<double>(value()) / stepsPerPercent;
}

QString ThinProgressBar::text() const
{
    return QStringLiteral("%1%").arg(static_cast<int>(percent()));
}

void ThinProgressBar::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QRectF bar(rect());
    drawBar(painter, bar, colors::track);
    if (value() == 0) return;
    // Never narrower than its own round ends.
    bar.setWidth(std::max(bar.height(), bar.width() * percent() / wholePercent));
    drawBar(painter, bar, colors::blue);
}

} // namespace ferrylane
