#include "camera/Camera.h"

#include <QCamera>
#include <QDir>
#include <QFileInfo>
#include <QMediaCaptureSession>
#include <QMediaDevices>
#include <QVideoSink>

#include <algorithm>
#include <mutex>
#include <stdexcept>

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

/// The first plane of a mapped frame as a picture, which keeps the frame mapped.
QImage firstPlane(QVideoFrame* mapped, QImage::Format format)
{
    const auto unmap = [](void* frame) {
        static_cast<QVideoFrame*>(frame)->unmap();
        delete static_cast<QVideoFrame*>(frame);
    };
    const uchar* const bits = mapped->bits(0);
    return {
        bits, mapped->width(), mapped->height(), mapped->bytesPerLine(0), format, unmap, mapped};
}

/// Every second byte, where luminance is mixed with colour.
QImage unmixed(const QVideoFrame& mapped, int offset)
{
    QImage grey(mapped.size(), QImage::Format_Grayscale8);
    for (int y = 0; y < grey.height(); ++y) {
        const uchar* from = mapped.bits(0) + qsizetype(y) * mapped.bytesPerLine(0) + offset;
        uchar* const to = grey.scanLine(y);
        for (int x = 0; x < grey.width(); ++x, from += 2) {
            to[x] = *from;
        }
    }
    return grey;
}

/// Lets nothing through any more once it is closed, and waits for what is on its way.
class Gate {
public:
    explicit Gate(Cameras::FrameHandler onFrame) : onFrame_(std::move(onFrame)) {}

    void pass(const QVideoFrame& frame)
    {
        // The one before is still being looked at.
        const std::unique_lock lock(mutex_, std::try_to_lock);
        if (lock.owns_lock() && onFrame_ && frame.isValid()) onFrame_(frame);
    }

    void close()
    {
        const std::lock_guard lock(mutex_);
        onFrame_ = nullptr;
    }

private:
    std::mutex mutex_;
    Cameras::FrameHandler onFrame_;
};

class RunningCamera final : public QObject {
public:
    RunningCamera(Cameras::FrameHandler onFrame, Cameras::FailureHandler onFailure)
        : gate_(std::make_shared<Gate>(std::move(onFrame)))
        , camera_(QMediaDevices::defaultVideoInput())
    {
        session_.setCamera(&camera_);
        session_.setVideoSink(&sink_);
        // On the thread that has the frame.
        connect(
            &sink_, &QVideoSink::videoFrameChanged, &sink_,
            [gate = gate_](const QVideoFrame& frame) { gate->pass(frame); }, Qt::DirectConnection);
        connect(&camera_, &QCamera::errorOccurred, &camera_,
            [onFailure = std::move(onFailure)](
                QCamera::Error, const QString& description) { onFailure(description); });
        camera_.start();
        if (camera_.error() != QCamera::NoError) {
            throw std::runtime_error(camera_.errorString().toStdString());
        }
    }
    ~RunningCamera() override
    {
        gate_->close();
        camera_.stop();
    }
    RunningCamera(const RunningCamera&) = delete;
    RunningCamera& operator=(const RunningCamera&) = delete;

private:
    std::shared_ptr<Gate> gate_;
    QCamera camera_;
    QVideoSink sink_;
    QMediaCaptureSession session_;
};

} // namespace

QImage luminanceOf(const QVideoFrame& frame)
{
    constexpr auto grey = QImage::Format_Grayscale8;
    auto mapped = std::make_unique<QVideoFrame>(frame);
    if (!mapped->map(QVideoFrame::ReadOnly)) return {};
    const auto format = frame.pixelFormat();
    if (beginsWithLuminance(format)) return firstPlane(mapped.release(), grey);
    const auto imageFormat = QVideoFrameFormat::imageFormatFromPixelFormat(format);
    if (imageFormat != QImage::Format_Invalid) {
        return firstPlane(mapped.release(), imageFormat).convertToFormat(grey);
    }
    QImage result;
    if (format == QVideoFrameFormat::Format_YUYV) result = unmixed(*mapped, 0);
    if (format == QVideoFrameFormat::Format_UYVY) result = unmixed(*mapped, 1);
    mapped->unmap();
    // What is left are compressed pictures and the like.
    return result.isNull() ? frame.toImage().convertToFormat(grey) : result;
}

bool SystemCameras::mayBeUsed() const
{
    const QFileInfoList devices
        = QDir(QStringLiteral("/dev"))
              .entryInfoList({QStringLiteral("video*")}, QDir::System | QDir::Files);
    const bool isOneReadable = std::any_of(devices.begin(), devices.end(),
        [](const QFileInfo& device) { return device.isReadable() && device.isWritable(); });
    return devices.isEmpty() || isOneReadable;
}

bool SystemCameras::hasCamera() const
{
    return !QMediaDevices::defaultVideoInput().isNull();
}

std::unique_ptr<QObject> SystemCameras::start(FrameHandler onFrame, FailureHandler onFailure)
{
    return std::make_unique<RunningCamera>(std::move(onFrame), std::move(onFailure));
}

} // namespace ferrylane
