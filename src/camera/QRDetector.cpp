#include "camera/QRDetector.h"

#include <QImage>
#include <QPainter>

#include <ZXing/ReadBarcode.h>

namespace ferrylane {

namespace {

/// What is transparent would become black otherwise.
QImage onWhite(const QImage& picture)
{
    QImage opaque(picture.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}

} // namespace

std::optional<QString> detectQRCode(const LuminanceView& picture)
{
    if (picture.width <= 0 || picture.height <= 0) return std::nullopt;
    ZXing::DecodeHints hints;
    hints.setFormats(ZXing::BarcodeFormat::QRCode);
    // A phone may be held at any angle.
    hints.setTryRotate(true);
    hints.setTryHarder(true);
    const ZXing::ImageView view(
        picture.data, picture.width, picture.height, ZXing::ImageFormat::Lum, picture.bytesPerLine);
    const ZXing::Result result = ZXing::ReadBarcode(view, hints);
    if (!result.isValid()) return std::nullopt;
    return QString::fromStdWString(result.text());
}

std::optional<QString> detectQRCode(const QImage& picture)
{
    if (picture.hasAlphaChannel()) return detectQRCode(onWhite(picture));
    const QImage grey = picture.convertToFormat(QImage::Format_Grayscale8);
    return detectQRCode(LuminanceView{
        grey.constBits(), grey.width(), grey.height(), static_cast<int>(grey.bytesPerLine())});
}

} // namespace ferrylane
