#include "app/windows/TransferHUD.h"

#include "app/widgets/Appearance.h"
#include "app/widgets/Buttons.h"
#include "app/widgets/MiddleElidedLabel.h"
#include "app/widgets/ThinProgressBar.h"
#include "app/windows/TransferTexts.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace ferrylane {

namespace {

constexpr QSize hudSize(340, 112);
constexpr double hudRadius = 14;
constexpr double distanceFromEdges = 18;
constexpr auto hudDoneTime = std::chrono::milliseconds(1500);

void placeInWindow(QWidget& widget, const Place& where)
{
    place(widget, where, hudSize.height());
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

TransferHUD::TransferHUD()
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
    setFixedSize(scaled(hudSize));
    addTexts();
    addControls();
    closeTimer_.setSingleShot(true);
    closeTimer_.callOnTimeout(this, &QWidget::hide);
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

void TransferHUD::addControls()
{
    auto* const stop = new FerrylaneActionButton(
        QStringLiteral("Stop"), [this] { Q_EMIT stopRequested(); }, this);
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

void TransferHUD::begin(const TransferState& state)
{
    closeTimer_.stop();
    setState(state);
    if (const QScreen* const mainScreen = QGuiApplication::primaryScreen()) {
        move(cornerOf(mainScreen->availableGeometry(), size()));
    }
    show();
    raise();
}

void TransferHUD::setState(const TransferState& state)
{
    setTransfer(state.fileName, state.fraction * 100, progressWindowText(state));
}

void TransferHUD::finish(const QString& fileName)
{
    if (!isVisible()) return;
    setTransfer(fileName, 100, progressWindowDoneText());
    closeTimer_.start(hudDoneTime);
}

void TransferHUD::stop()
{
    closeTimer_.stop();
    hide();
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
    drawFrame(painter, QRectF(rect()), {colors::card, colors::hudBorder, 1, hudRadius});
}

void TransferHUD::resizeEvent(QResizeEvent* /*event*/)
{
    // Where no compositor blends windows, what is transparent would be black.
    setMask(touchedPixels(size(), scaled(hudRadius)));
}

} // namespace ferrylane
