#include "app/widgets/QRCodeButton.h"

#include "app/widgets/Appearance.h"
#include "platform/QRCode.h"

#include <QPainter>

#include <algorithm>

namespace ferrylane {

namespace {

constexpr QSize codeButtonSize(105, 105);
constexpr double buttonRadius = 4;

/// The code with as many pixels of the screen for each module as there is room for.
QImage enlarged(const QImage& code, const QSizeF& room)
{
    const double modules = std::max(code.width(), code.height());
    const double pixels = std::min(room.width(), room.height());
    const int pixelsPerModule = std::max(1, static_cast<int>(pixels / modules));
    return code.scaled(code.size() * pixelsPerModule);
}

} // namespace

QImage qr(const QString& text, int pixelsPerModule)
{
    const auto code = platform::QRCode::ofText(text);
    if (!code) return {};
    QImage modules(code->width(), code->width(), QImage::Format_RGB32);
    for (int row = 0; row < code->width(); ++row) {
        for (int column = 0; column < code->width(); ++column) {
            modules.setPixelColor(column, row, code->isDark(row, column) ? Qt::black : Qt::white);
        }
    }
    return modules.scaled(modules.size() * pixelsPerModule);
}

QRCodeButton::QRCodeButton(QWidget* parent) : PaintedButton(parent)
{
    setEnabled(false);
}

void QRCodeButton::setCode(const QImage& code)
{
    code_ = code;
    setEnabled(!code_.isNull());
    update();
}

QSize QRCodeButton::sizeHint() const
{
    return scaled(codeButtonSize);
}

void QRCodeButton::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFocusRing(painter, *this, buttonRadius);
    if (code_.isNull()) return;

    const double pixelRatio = devicePixelRatioF();
    QImage image = enlarged(code_, QSizeF(size()) * pixelRatio);
    image.setDevicePixelRatio(pixelRatio);
    const QPointF centred
        = QRectF(rect()).center() - QRectF({}, image.deviceIndependentSize()).center();
    // With a ratio such as 1.25 the widget itself may begin within a pixel of the screen.
    const QTransform toScreen = painter.deviceTransform();
    const QPointF onPixel = toScreen.inverted().map(QPointF(toScreen.map(centred).toPoint()));
    painter.drawImage(onPixel, image);
}

} // namespace ferrylane
