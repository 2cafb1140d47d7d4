#include "app/TransferHUD.h"

#include "app/Appearance.h"
#include "app/FerrylaneActionButton.h"
#include "app/MiddleElidedLabel.h"
#include "app/ThinProgressBar.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace ferrylane {

namespace {

constexpr QSize sizeInPoints(340, 112);
constexpr double cornerRadius = 14;
constexpr double distanceFromEdges = 18;

void placeInWindow(QWidget& widget, const Place& where)
{
    place(widget, where, sizeInPoints.height());
}

/// Every pixel that a rectangle with round corners touches, so that the mask takes nothing from the
/// smooth edge that a compositor shows.
QRegion touchedPixels(const QSize& window, double radius)
{
    QRegion touched;
    for (int y = 0; y < window.height(); ++y) {
        const int fromEdge = std::min(y, window.height() - 1 - y);
        const double toCentre = std::max(0.0, radius - fromEdge - 1);
        const double inset = radius - std::sqrt(radius * radius - toCentre * toCentre);
        const int left = static_cast<int>(inset);
        touched += QRect(left, y, window.width() - 2 * left, 1);
    }
    return touched;
}

} // namespace

TransferHUD::TransferHUD(std::function<void()> onStop)
    : QWidget(nullptr,
        Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint
            | Qt::WindowDoesNotAcceptFocus)
{
    setWindowTitle(QStringLiteral("Ferrylane"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    // No entry among the windows, and shown on every desktop.
    setAttribute(Qt::WA_X11NetWmWindowTypeNotification);
    setAttribute(Qt::WA_TranslucentBackground);
    // The main panel may be closed while this is shown; that is no reason to end the program.
    setAttribute(Qt::WA_QuitOnClose, false);
    setPalette(lightPalette());
    setFixedSize(scaled(sizeInPoints));
    addTexts();
    addControls(std::move(onStop));
}

void TransferHUD::addTexts()
{
    auto* const name = new QLabel(QStringLiteral("Ferrylane"), this);
    name->setFont(textFont(12, QFont::DemiBold));
    setTextColor(*name, colors::blue);
    placeInWindow(*name, {14, 86, 248, 16});

    transferHUDTitle_ = new MiddleElidedLabel(this);
    transferHUDTitle_->setFont(textFont(15, QFont::DemiBold));
    setTextColor(*transferHUDTitle_, colors::hudTitle);
    placeInWindow(*transferHUDTitle_, {14, 61, 248, 20});

    transferHUDStatus_ = new MiddleElidedLabel(this);
    transferHUDStatus_->setFont(textFont(12, QFont::Medium));
    transferHUDStatus_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setTextColor(*transferHUDStatus_, colors::hudStatus);
    placeInWindow(*transferHUDStatus_, {14, 13, 314, 18});
}

void TransferHUD::addControls(std::function<void()> onStop)
{
    auto* const stop = new FerrylaneActionButton(QStringLiteral("Stop"), std::move(onStop), this);
    stop->setFont(textFont(12));
    stop->setAccessibleDescription(QStringLiteral("Stop receiving this file"));
    placeInWindow(*stop, {270, 58, 58, 26});

    transferHUDProgress_ = new ThinProgressBar(this);
    transferHUDProgress_->setAccessibleName(QStringLiteral("Transfer progress"));
    placeInWindow(*transferHUDProgress_, {14, 40, 314, 10});
}

void TransferHUD::setTransfer(const QString& fileName, double percent, const QString& status)
{
    transferHUDTitle_->setText(fileName);
    transferHUDProgress_->setPercent(percent);
    transferHUDStatus_->setText(status);
}

void TransferHUD::present()
{
    if (const QScreen* const mainScreen = QGuiApplication::primaryScreen()) {
        move(cornerOf(mainScreen->availableGeometry(), size()));
    }
    show();
    raise();
}

QPoint TransferHUD::cornerOf(const QRect& usableArea, const QSize& window)
{
    const int distance = static_cast<int>(std::lround(scaled(distanceFromEdges)));
    const int right = usableArea.x() + usableArea.width();
    return {right - window.width() - distance, usableArea.y() + distance};
}

void TransferHUD::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFrame(painter, QRectF(rect()), {colors::card, colors::hudBorder, 1, cornerRadius});
}

void TransferHUD::resizeEvent(QResizeEvent* /*event*/)
{
    // Where no compositor blends windows, what is transparent would be black.
    setMask(touchedPixels(size(), scaled(cornerRadius)));
}

} // namespace ferrylane
