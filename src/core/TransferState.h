#pragma once

#include "platform/Clock.h"

#include <QString>

#include <algorithm>

namespace ferrylane {

/// How a transfer gets on, of either direction.
struct TransferState {
    enum class Stage {
        none,       ///< nothing is or was transferred
        connecting, ///< to the phone, like the next when sending
        waiting,    ///< for a phone that is busy
        running,
        completed,
        failed,
        stopped, ///< by the user
    };

    Stage stage = Stage::none;
    QString fileName{};  ///< of the file that is under way, or was last
    QString peer{};      ///< the phone, when sending
    int fileIndex = 0;   ///< from 0
    int fileCount = 1;   ///< that are transferred one after the other
    double fraction = 0; ///< of this file, 0 to 1
    double speed = 0;    ///< MB/s, with 1 MB = 1,000,000 bytes
    QString reason{};    ///< why it failed, for people; others may have chosen the words

    [[nodiscard]] bool isUnderWay() const
    {
        return stage == Stage::connecting || stage == Stage::waiting || stage == Stage::running;
    }
};

/// MB/s, with 1 MB = 1,000,000 bytes. Counts at least a millisecond: a speed over less means
/// nothing.
[[nodiscard]] inline double megabytesPerSecond(quint64 bytes, platform::Duration elapsed)
{
    constexpr double bytesPerMegabyte = 1'000'000;
    constexpr double shortestSeconds = 0.001;
    return static_cast<double>(bytes) / bytesPerMegabyte
        / std::max(platform::seconds(elapsed), shortestSeconds);
}

} // namespace ferrylane
