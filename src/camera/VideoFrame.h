#pragma once

#include "camera/Camera.h"

class QVideoFrame;

namespace ferrylane {

/// A frame of the multimedia library. Formats that keep the luminance apart are not converted for
/// it. Null when the frame's memory cannot be read.
[[nodiscard]] std::shared_ptr<const CameraFrame> cameraFrame(const QVideoFrame& frame);

} // namespace ferrylane
