#pragma once

#include "bench/Process.h"

#include <QByteArray>

#include <optional>

namespace bench {

/// What one send cost the process that made it.
struct SendCost {
    double seconds; ///< by the clock, from the call to its completion
    Process::ProcessorTime processorTime;
    double idleMemory; ///< MiB, of the process before its first send
    double peakMemory; ///< MiB, the highest since then

    /// As it goes from one process to another, with a line break.
    [[nodiscard]] QByteArray toLine() const;
    [[nodiscard]] static std::optional<SendCost> fromLine(const QByteArray& line);
};

} // namespace bench
