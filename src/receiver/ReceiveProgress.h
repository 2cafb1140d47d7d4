#pragma once

#include "platform/Clock.h"
#include "platform/NotificationCenter.h"

#include <QtGlobal>

namespace ferrylane {

/// Tells the user interface how an upload gets on: at most 40 steps of progress, and the speed
/// about once a second, so that a large file does not flood the main thread. Speeds are megabytes
/// (1,000,000 bytes) per second.
class ReceiveProgress {
public:
    /// `declaredFileSize` in bytes, below 1 when unknown: no steps are told then. `notifications`
    /// and `clock` must outlive this.
    ReceiveProgress(qint64 declaredFileSize, platform::NotificationCenter& notifications,
        const platform::Clock& clock);

    void started(const QString& displayName);
    /// `totalBytes`: plaintext bytes so far.
    void advanced(quint64 totalBytes);
    void stored(quint64 totalBytes, const QString& storedName);
    void stopped(const QString& reason);

private:
    void reportStep(quint64 totalBytes);
    void reportSpeed(quint64 totalBytes, platform::TimePoint now);

    qint64 declaredFileSize_;
    platform::NotificationCenter& notifications_;
    const platform::Clock& clock_;
    platform::TimePoint startTime_;
    platform::TimePoint lastSpeedTime_;
    quint64 lastSpeedBytes_ = 0;
    quint64 lastProgressStep_ = 0;
};

} // namespace ferrylane
