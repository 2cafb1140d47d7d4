#pragma once

#include "camera/Camera.h"

namespace ferrylane {

/// The cameras of this computer. There is no question whether they may be used: the user has the
/// rights to a camera's device or has not.
class SystemCameras final : public Cameras {
public:
    [[nodiscard]] Access access() const override;
    void requestAccess(std::function<void(bool isGranted)> onAnswer) override;
    [[nodiscard]] bool hasCamera() const override;
    [[nodiscard]] std::unique_ptr<Camera> start(
        Camera::FrameHandler onFrame, Camera::FailureHandler onFailure) override;
};

} // namespace ferrylane
