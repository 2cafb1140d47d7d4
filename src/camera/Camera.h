#pragma once

#include "camera/QRDetector.h"
#include "platform/Interface.h"

#include <QImage>

#include <functional>
#include <memory>
#include <optional>

namespace ferrylane {

/// A picture that a camera has taken.
class CameraFrame : public platform::Interface {
public:
    /// From any thread; valid as long as the frame.
    [[nodiscard]] virtual LuminanceView luminance() const = 0;
    /// With its colours; a conversion. On the main thread.
    [[nodiscard]] virtual QImage image() const = 0;
};

/// A camera that takes pictures from its creation on until it goes; then no handler runs or will
/// run. Made and destroyed on the main thread.
class Camera : public platform::Interface {
public:
    /// Called for each picture on a thread of the camera's; must not block for long.
    using FrameHandler = std::function<void(const std::shared_ptr<const CameraFrame>&)>;
    /// Called on the main thread when the camera cannot go on.
    using FailureHandler = std::function<void(const QString& description)>;
};

/// The computer's cameras. On the main thread.
class Cameras : public platform::Interface {
public:
    enum class Access { authorized, denied, notDetermined };

    [[nodiscard]] virtual Access access() const = 0;
    /// Asks for it; `onAnswer` is called on any thread.
    virtual void requestAccess(std::function<void(bool isGranted)> onAnswer) = 0;
    [[nodiscard]] virtual bool hasCamera() const = 0;
    /// Starts the default camera. Throws std::runtime_error, with words for people, when it does
    /// not work.
    [[nodiscard]] virtual std::unique_ptr<Camera> start(
        Camera::FrameHandler onFrame, Camera::FailureHandler onFailure)
        = 0;
};

} // namespace ferrylane
