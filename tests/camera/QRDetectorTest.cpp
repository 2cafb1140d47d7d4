#include "camera/QRDetector.h"

#include "app/widgets/QRCodeButton.h"
#include "protocol/PairingLink.h"
#include "support/QtPrinting.h"

#include <QPainter>

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;

namespace {

const QString phonesLink
    = u"http://192.168.1.77:8787/?flkey="_s + QString(43, u'K') + u"&name=Pixel"_s;

/// A frame of a camera in which a code is seen, turned, on a grey background.
QImage frameWith(const QString& text, QSize size, double degrees)
{
    QImage frame(size, QImage::Format_RGB32);
    frame.fill(QColor(120, 130, 125));
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QImage code = qr(text, 4);
    painter.translate(size.width() / 2.0, size.height() / 2.0);
    painter.rotate(degrees);
    const double side = size.height() * 0.6;
    painter.fillRect(QRectF(-side / 2, -side / 2, side, side), Qt::white);
    const double inner = side * 0.8;
    painter.drawImage(QRectF(-inner / 2, -inner / 2, inner, inner), code);
    return frame;
}

QImage blurred(const QImage& image, int factor)
{
    return image.scaled(image.size() / factor, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .scaled(image.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

TEST(QRDetectorTest, readsCodesAsCamerasSeeThem)
{
    for (const QSize size : {QSize(640, 480), QSize(1280, 720), QSize(1920, 1080)}) {
        for (const double degrees : {0.0, 8.0, 30.0, 90.0, 180.0}) {
            const QImage sharp = frameWith(phonesLink, size, degrees);
            EXPECT_EQ(detectQRCode(sharp), phonesLink) << size.width() << ' ' << degrees;
            EXPECT_EQ(detectQRCode(blurred(sharp, 2)), phonesLink)
                << size.width() << ' ' << degrees;
        }
    }
    EXPECT_EQ(detectQRCode(frameWith(u"WIFI:S:home;;"_s, {1280, 720}, 5)), u"WIFI:S:home;;"_s);
    EXPECT_EQ(detectQRCode(frameWith(u"\u00E9\u4E2D"_s, {1280, 720}, 0)), u"\u00E9\u4E2D"_s);
}

TEST(QRDetectorTest, readsOneOfTwoCodesAndNoneOfNone)
{
    QImage two(1280, 720, QImage::Format_RGB32);
    QPainter painter(&two);
    painter.drawImage(0, 0, frameWith(phonesLink, {640, 720}, 0));
    painter.drawImage(640, 0, frameWith(u"another"_s, {640, 720}, 0));
    painter.end();
    const QString first = detectQRCode(two).value_or(QString());
    EXPECT_TRUE(first == phonesLink || first == u"another"_s) << qPrintable(first);

    QImage blank(1280, 720, QImage::Format_RGB32);
    blank.fill(Qt::white);
    EXPECT_EQ(detectQRCode(blank), std::nullopt);
    EXPECT_EQ(detectQRCode(QImage()), std::nullopt);
    EXPECT_EQ(detectQRCode(blurred(frameWith(phonesLink, {640, 480}, 0), 40)), std::nullopt);
}

TEST(QRDetectorTest, readsWhatThisProgramDraws)
{
    const QString receiver = u"http://192.168.1.20:8788/?flkey="_s + QString(43, u'K')
        + u"&name=Office%20PC%20%C3%A9"_s;
    for (const QString& text : {receiver, phonesLink}) {
        const QImage code = qr(text, 10);
        QImage onPaper(code.size() + QSize(80, 80), QImage::Format_RGB32);
        onPaper.fill(Qt::white);
        QPainter(&onPaper).drawImage(40, 40, code);
        EXPECT_EQ(detectQRCode(onPaper), text);
        QImage transparent = onPaper.convertToFormat(QImage::Format_ARGB32);
        transparent.fill(Qt::transparent);
        QPainter(&transparent).drawImage(40, 40, code);
        EXPECT_EQ(detectQRCode(transparent), text);
    }
}
