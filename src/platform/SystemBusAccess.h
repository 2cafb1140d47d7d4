#pragma once

#include "platform/Clock.h"

#include <QString>

namespace platform {

/// How to reach the system's message bus.
struct SystemBusAccess {
    /// Empty: where the system has it.
    QString address = {};
    /// The pause between two attempts.
    Duration retryInterval = std::chrono::seconds(2);
};

} // namespace platform
