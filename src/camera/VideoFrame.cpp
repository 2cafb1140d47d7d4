#include "camera/VideoFrame.h"

#include <QVideoFrame>

#include <utility>

namespace ferrylane {

namespace {

/// Whether the first plane is nothing but luminance, a byte a pixel.
bool beginsWithLuminance(QVideoFrameFormat::PixelFormat format)
{
    switch (static_cast<int>(format)) {
    case QVideoFrameFormat::Format_YUV420P:
    case QVideoFrameFormat::Format_YUV422P:
    case QVideoFrameFormat::Format_YV12:
    case QVideoFrameFormat::Format_NV12:
    case QVideoFrameFormat::Format_NV21:
    case QVideoFrameFormat::Format_IMC1:
    case QVideoFrameFormat::Format_IMC2:
    case QVideoFrameFormat::Format_IMC3:
    case QVideoFrameFormat::Format_IMC4:
    case QVideoFrameFormat::Format_Y8:
        return true;
    default:
        return false;
    }
}

/// Which byte of two is the luminance, in formats that mix it with colour; none in others.
std::optional<int> luminanceOffset(QVideoFrameFormat::PixelFormat format)
{
    if (format == QVideoFrameFormat::Format_YUYV) return 0;
    if (format == QVideoFrameFormat::Format_UYVY) return 1;
    return std::nullopt;
}

/// Every second byte.
QImage unmixed(const QVideoFrame& frame, int offset)
{
    QImage grey(frame.size(), QImage::Format_Grayscale8);
    for (int y = 0; y < grey.height(); ++y) {
        const uchar* from = frame.bits(0) + qsizetype(y) * frame.bytesPerLine(0) + offset;
        uchar* const to = grey.scanLine(y);
        for (int x = 0; x < grey.width(); ++x, from += 2) {
            to[x] = *from;
        }
    }
    return grey;
}

/// A frame that stays mapped.
class LuminanceFrame final : public CameraFrame {
public:
    explicit LuminanceFrame(QVideoFrame frame)
        : frame_(std::move(frame)), isMapped_(frame_.map(QVideoFrame::ReadOnly))
    {
    }
    ~LuminanceFrame() override { frame_.unmap(); }
    LuminanceFrame(const LuminanceFrame&) = delete;
    LuminanceFrame& operator=(const LuminanceFrame&) = delete;

    [[nodiscard]] bool isMapped() const { return isMapped_; }

    [[nodiscard]] LuminanceView luminance() const override
    {
        return {frame_.bits(0), frame_.width(), frame_.height(), frame_.bytesPerLine(0)};
    }
    [[nodiscard]] QImage image() const override { return frame_.toImage(); }

private:
    QVideoFrame frame_;
    bool isMapped_;
};

/// A frame of which the luminance had to be made.
class ConvertedFrame final : public CameraFrame {
public:
    ConvertedFrame(QVideoFrame frame, QImage grey)
        : frame_(std::move(frame)), grey_(std::move(grey))
    {
    }

    [[nodiscard]] LuminanceView luminance() const override
    {
        return {grey_.constBits(), grey_.width(), grey_.height(),
            static_cast<int>(grey_.bytesPerLine())};
    }
    [[nodiscard]] QImage image() const override { return frame_.toImage(); }

private:
    QVideoFrame frame_;
    QImage grey_;
};

/// Of a mapped frame.
QImage greyOfMapped(const QVideoFrame& frame)
{
    if (const auto offset = luminanceOffset(frame.pixelFormat())) return unmixed(frame, *offset);
    const auto format = QVideoFrameFormat::imageFormatFromPixelFormat(frame.pixelFormat());
    if (format == QImage::Format_Invalid) return {};
    return QImage(frame.bits(0), frame.width(), frame.height(), frame.bytesPerLine(0), format)
        .convertToFormat(QImage::Format_Grayscale8);
}

QImage greyOf(QVideoFrame frame)
{
    if (!frame.map(QVideoFrame::ReadOnly)) return {};
    QImage grey = greyOfMapped(frame);
    frame.unmap();
    // What is left are compressed pictures and the like.
    return grey.isNull() ? frame.toImage().convertToFormat(QImage::Format_Grayscale8) : grey;
}

} // namespace

std::shared_ptr<const CameraFrame> cameraFrame(const QVideoFrame& frame)
{
    if (!frame.isValid()) return nullptr;
    if (beginsWithLuminance(frame.pixelFormat())) {
        auto mapped = std::make_shared<LuminanceFrame>(frame);
        return mapped->isMapped() ? mapped : nullptr;
    }
    QImage grey = greyOf(frame);
    return grey.isNull() ? nullptr : std::make_shared<ConvertedFrame>(frame, std::move(grey));
}

} // namespace ferrylane
