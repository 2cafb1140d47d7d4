#pragma once

#include "platform/Interface.h"

#include <QImage>
#include <QObject>
#include <QVideoFrame>

#include <functional>
#include <memory>

namespace ferrylane {

/// The luminance of a frame, a byte a pixel. Formats that keep it apart are not copied: the picture
/// is that in the frame's memory. Null when the frame's memory cannot be read. From any thread.
[[nodiscard]] QImage luminanceOf(const QVideoFrame& frame);

/// Whether there is a camera and it may be used, and its pictures; tests have none and play it. On
/// the main thread.
class Cameras : public platform::Interface {
public:
    /// Called for each picture on a thread of the camera's; must not block for long.
    using FrameHandler = std::function<void(const QVideoFrame&)>;
    /// Called on the main thread when the camera cannot go on.
    using FailureHandler = std::function<void(const QString& description)>;

    [[nodiscard]] virtual bool mayBeUsed() const = 0;
    [[nodiscard]] virtual bool hasCamera() const = 0;
    /// Starts the default camera, until the result goes: then no handler runs or will run. Throws
    /// std::runtime_error, with words for people, when it does not work.
    [[nodiscard]] virtual std::unique_ptr<QObject> start(
        FrameHandler onFrame, FailureHandler onFailure)
        = 0;
};

/// The cameras of this computer. There is no question whether they may be used: the user has the
/// rights to a camera's device or has not.
class SystemCameras final : public Cameras {
public:
    [[nodiscard]] bool mayBeUsed() const override;
    [[nodiscard]] bool hasCamera() const override;
    [[nodiscard]] std::unique_ptr<QObject> start(
        FrameHandler onFrame, FailureHandler onFailure) override;
};

} // namespace ferrylane
