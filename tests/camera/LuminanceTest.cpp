#include "camera/Camera.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ferrylane;

namespace {

constexpr QSize frameSize(34, 6);

int luminanceAt(int x, int y)
{
    return 16 + (x * 5 + y * 23) % 200;
}

/// A frame of which the luminance is known; lines may be longer than the picture.
QVideoFrame frameIn(QVideoFrameFormat::PixelFormat format)
{
    QVideoFrame frame(QVideoFrameFormat(frameSize, format));
    EXPECT_TRUE(frame.map(QVideoFrame::WriteOnly));
    std::fill_n(frame.bits(0), frame.mappedBytes(0), uchar(128));
    const bool isYuyv = format == QVideoFrameFormat::Format_YUYV;
    const bool isUyvy = format == QVideoFrameFormat::Format_UYVY;
    const bool isRgb = format == QVideoFrameFormat::Format_BGRA8888
        || format == QVideoFrameFormat::Format_RGBA8888;
    const int step = isRgb ? 4 : isYuyv || isUyvy ? 2 : 1;
    for (int y = 0; y < frameSize.height(); ++y) {
        for (int x = 0; x < frameSize.width(); ++x) {
            uchar* const pixel = frame.bits(0) + y * frame.bytesPerLine(0) + x * step;
            const auto value = static_cast<uchar>(luminanceAt(x, y));
            pixel[isUyvy ? 1 : 0] = value;
            if (isRgb) pixel[1] = pixel[2] = value;
        }
    }
    frame.unmap();
    return frame;
}

} // namespace

TEST(LuminanceTest, hasTheLuminanceOfEveryFormat)
{
    for (const auto format : {QVideoFrameFormat::Format_YUV420P, QVideoFrameFormat::Format_NV12,
             QVideoFrameFormat::Format_NV21, QVideoFrameFormat::Format_YV12,
             QVideoFrameFormat::Format_YUYV, QVideoFrameFormat::Format_UYVY,
             QVideoFrameFormat::Format_Y8, QVideoFrameFormat::Format_BGRA8888,
             QVideoFrameFormat::Format_RGBA8888}) {
        const QImage grey = luminanceOf(frameIn(format));
        ASSERT_EQ(grey.size(), frameSize) << format;
        ASSERT_EQ(grey.format(), QImage::Format_Grayscale8) << format;
        for (int y = 0; y < frameSize.height(); ++y) {
            for (int x = 0; x < frameSize.width(); ++x) {
                ASSERT_NEAR(grey.constScanLine(y)[x], luminanceAt(x, y), 1)
                    << format << " at " << x << ", " << y;
            }
        }
    }
    EXPECT_TRUE(luminanceOf(QVideoFrame()).isNull());
}
