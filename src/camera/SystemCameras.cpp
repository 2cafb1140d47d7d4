#include "camera/SystemCameras.h"

#include "camera/VideoFrame.h"

#include <QCamera>
#include <QDir>
#include <QFileInfo>
#include <QMediaCaptureSession>
#include <QMediaDevices>
#include <QVideoFrame>
#include <QVideoSink>

#include <algorithm>
#include <mutex>
#include <stdexcept>

namespace ferrylane {

namespace {

/// Lets nothing through any more once it is closed, and waits for what is on its way.
class Gate {
public:
    explicit Gate(Camera::FrameHandler onFrame) : onFrame_(std::move(onFrame)) {}

    void pass(const QVideoFrame& frame)
    {
        // The one before is still being looked at.
        const std::unique_lock lock(mutex_, std::try_to_lock);
        if (!lock.owns_lock() || !onFrame_) return;
        if (const auto picture = cameraFrame(frame)) onFrame_(picture);
    }

    void close()
    {
        const std::lock_guard lock(mutex_);
        onFrame_ = nullptr;
    }

private:
    std::mutex mutex_;
    Camera::FrameHandler onFrame_;
};

class SystemCamera final : public Camera {
public:
    SystemCamera(FrameHandler onFrame, FailureHandler onFailure)
        : gate_(std::make_shared<Gate>(std::move(onFrame)))
        , camera_(QMediaDevices::defaultVideoInput())
    {
        session_.setCamera(&camera_);
        session_.setVideoSink(&sink_);
        // On the thread that has the frame.
        QObject::connect(
            &sink_, &QVideoSink::videoFrameChanged, &sink_,
            [gate = gate_](const QVideoFrame& frame) { gate->pass(frame); }, Qt::DirectConnection);
        QObject::connect(&camera_, &QCamera::errorOccurred, &camera_,
            [onFailure = std::move(onFailure)](
                QCamera::Error, const QString& description) { onFailure(description); });
        camera_.start();
        if (camera_.error() != QCamera::NoError) {
            throw std::runtime_error(camera_.errorString().toStdString());
        }
    }
    ~SystemCamera() override
    {
        gate_->close();
        camera_.stop();
    }
    SystemCamera(const SystemCamera&) = delete;
    SystemCamera& operator=(const SystemCamera&) = delete;

private:
    std::shared_ptr<Gate> gate_;
    QCamera camera_;
    QVideoSink sink_;
    QMediaCaptureSession session_;
};

} // namespace

Cameras::Access SystemCameras::access() const
{
    const QFileInfoList devices
        = QDir(QStringLiteral("/dev"))
              .entryInfoList({QStringLiteral("video*")}, QDir::System | QDir::Files);
    const bool isOneReadable = std::any_of(devices.begin(), devices.end(),
        [](const QFileInfo& device) { return device.isReadable() && device.isWritable(); });
    return devices.isEmpty() || isOneReadable ? Access::authorized : Access::denied;
}

void SystemCameras::requestAccess(std::function<void(bool isGranted)> onAnswer)
{
    onAnswer(access() == Access::authorized);
}

bool SystemCameras::hasCamera() const
{
    return !QMediaDevices::defaultVideoInput().isNull();
}

std::unique_ptr<Camera> SystemCameras::start(
    Camera::FrameHandler onFrame, Camera::FailureHandler onFailure)
{
    return std::make_unique<SystemCamera>(std::move(onFrame), std::move(onFailure));
}

} // namespace ferrylane
