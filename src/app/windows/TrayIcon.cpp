#include "app/windows/TrayIcon.h"

#include "app/widgets/Appearance.h"

#include <QGuiApplication>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>

#include <algorithm>

namespace ferrylane {

namespace {

constexpr QChar arrows = u'\u21C4';
constexpr QChar ellipsis = u'\u2026';

/// One arrow from `tail` to the tip, which is `length` further, to the left when it is negative.
/// `thickness` is that of the shaft; all are whole pixels.
void drawArrow(QPainter& painter, QPoint tail, int length, int thickness)
{
    const int direction = length < 0 ? -1 : 1;
    const int headLength = thickness * 2;
    const QPoint neck = tail + QPoint(length - direction * headLength, 0);
    painter.fillRect(
        QRect(std::min(tail.x(), neck.x()), tail.y(), std::abs(neck.x() - tail.x()), thickness),
        painter.brush());
    const double middle = tail.y() + thickness / 2.0;
    const double halfHead = thickness * 1.5;
    painter.drawPolygon(QPolygonF({QPointF(neck.x(), middle - halfHead),
        QPointF(neck.x() + direction * headLength, middle), QPointF(neck.x(), middle + halfHead)}));
}

/// The two arrows, one above the other, in the middle of `area`.
void drawArrows(QPainter& painter, const QRect& area, int thickness)
{
    const int gap = thickness * 3;
    const int top = area.y() + (area.height() - gap - thickness) / 2;
    drawArrow(painter, {area.x(), top}, area.width(), thickness);
    drawArrow(painter, {area.x() + area.width(), top + gap}, -area.width(), thickness);
}

void drawDots(QPainter& painter, const QRect& area)
{
    const int size = std::max(2, area.height() / 3);
    const int step = size * 2;
    const int left = area.center().x() + 1 - (step * 2 + size) / 2;
    for (int i = 0; i < 3; ++i) {
        painter.drawEllipse(left + i * step, area.y() + (area.height() - size) / 2, size, size);
    }
}

/// As large as `area` allows: the digits fill its height unless there are many.
void drawText(QPainter& painter, const QRect& area, const QString& text)
{
    QFont font = QGuiApplication::font();
    font.setBold(true);
    int pixels = area.height() * 3 / 2;
    QRect ink;
    do {
        font.setPixelSize(pixels);
        ink = QFontMetrics(font).tightBoundingRect(text);
    } while ((ink.width() > area.width() || ink.height() > area.height()) && --pixels > 4);
    painter.setFont(font);
    const QPoint offset((area.width() - ink.width()) / 2, (area.height() - ink.height()) / 2);
    painter.drawText(area.topLeft() + offset - ink.topLeft(), text);
}

QPixmap titlePixmap(const QString& title, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors::blue);
    painter.drawRoundedRect(pixmap.rect(), size / 4.5, size / 4.5);

    painter.setBrush(Qt::white);
    const int margin = std::max(2, size / 8);
    const QRect inside = pixmap.rect().adjusted(margin, margin, -margin, -margin);
    const QString rest = QString(title).remove(arrows).trimmed();
    if (rest.isEmpty()) {
        drawArrows(painter, inside, std::max(2, size / 9));
        return pixmap;
    }
    const int half = size / 2;
    drawArrows(painter, QRect(inside.x(), margin / 2, inside.width(), half - margin / 2),
        std::max(1, size / 14));
    painter.setPen(rest == ellipsis ? QPen(Qt::NoPen) : QPen(Qt::white));
    const QRect lower(
        margin / 2 + 1, half + 1, size - margin - 2, size - half - 1 - margin / 2 - 1);
    rest == ellipsis ? drawDots(painter, lower) : drawText(painter, lower, rest);
    return pixmap;
}

/// The title as a square icon: the arrows "⇄", with what follows them under them. White on the
/// program's blue, as the tray behind it may be light, dark or anything between. Drawn for each
/// usual size by itself, so that lines fall on whole pixels.
QIcon titleIcon(const QString& title)
{
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 44, 48, 64, 96}) {
        icon.addPixmap(titlePixmap(title, size));
    }
    return icon;
}

} // namespace

TrayIcon::TrayIcon(QMenu& menu) : menu_(menu), title_(arrows)
{
    renew();
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::setTitle(const QString& title)
{
    title_ = title;
    icon_->setIcon(titleIcon(title_));
    icon_->setToolTip(title_);
}

void TrayIcon::renew()
{
    icon_ = std::make_unique<QSystemTrayIcon>();
    icon_->setContextMenu(&menu_);
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(),
        [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger) menu_.actions().front()->trigger();
        });
    setTitle(title_);
    icon_->show();
}

} // namespace ferrylane
