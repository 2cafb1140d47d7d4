#include "camera/QRDetector.h"

#include <QBuffer>
#include <QByteArrayList>
#include <QImage>
#include <QImageReader>
#include <QPainter>

#define ZX_USE_UTF8 // Versions before 2.0 give wide characters without it.
#include <ZXing/ReadBarcode.h>

namespace ferrylane {

namespace {

// The later name of the same.
#if __has_include(<ZXing/ReaderOptions.h>)
using ReaderOptions = ZXing::ReaderOptions;
#else
using ReaderOptions = ZXing::DecodeHints;
#endif

/// What is transparent would become black otherwise.
QImage onWhite(const QImage& picture)
{
    QImage opaque(picture.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}

/// Null when it cannot be decoded, or not within the limits.
QImage decoded(QByteArrayView content)
{
    if (content.size() > maximumPictureFileBytes) return {};
    QByteArray bytes = QByteArray::fromRawData(content.data(), content.size());
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    // The desktop's plugins may know others, such as drawings, which a few bytes make endless work.
    const QByteArrayList usualKinds{"png", "jpeg", "bmp", "gif", "webp"};
    if (!usualKinds.contains(reader.format())) return {};
    // From the head alone.
    const QSize size = reader.size();
    if (size.isEmpty() || qint64(size.width()) * size.height() > maximumPicturePixels) return {};
    return reader.read();
}

} // namespace

std::optional<QString> detectQRCode(const QImage& picture)
{
    const QImage grey = (picture.hasAlphaChannel() ? onWhite(picture) : picture)
                            .convertToFormat(QImage::Format_Grayscale8);
    if (grey.isNull()) return std::nullopt;
    ReaderOptions options;
    options.setFormats(ZXing::BarcodeFormat::QRCode);
    // A phone may be held at any angle.
    options.setTryRotate(true);
    options.setTryHarder(true);
    const ZXing::ImageView view(grey.constBits(), grey.width(), grey.height(),
        ZXing::ImageFormat::Lum, static_cast<int>(grey.bytesPerLine()));
    const auto result = ZXing::ReadBarcode(view, options);
    if (!result.isValid()) return std::nullopt;
    return QString::fromStdString(result.text());
}

std::optional<QString> detectQRCodeInFile(QByteArrayView content)
{
    return detectQRCode(decoded(content));
}

} // namespace ferrylane
