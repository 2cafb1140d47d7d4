#pragma once

#include "platform/Clock.h"

#include <QtGlobal>

namespace ferrylane {

/// MB/s, with 1 MB = 1,000,000 bytes. Counts at least a millisecond: a speed over less means
/// nothing.
[[nodiscard]] double megabytesPerSecond(quint64 bytes, platform::Duration elapsed);

} // namespace ferrylane
