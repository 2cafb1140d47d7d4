#pragma once

#include "support/Waiting.h"

#include <QCoreApplication>

namespace support {

/// Runs this thread's event loop until `done` holds; false when it does not in time.
[[nodiscard]] inline bool processEventsUntil(
    const std::function<bool()>& done, std::chrono::milliseconds limit = patience)
{
    return waitUntil(
        [&] {
            QCoreApplication::processEvents();
            return done();
        },
        limit);
}

} // namespace support
