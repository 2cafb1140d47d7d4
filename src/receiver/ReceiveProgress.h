#pragma once

#include "platform/Clock.h"
#include "receiver/UploadReports.h"

#include <QtGlobal>

#include <atomic>

namespace ferrylane {

/// Tells how one upload gets on: nothing before it has proved authentic, then at most 40 steps of
/// progress, and the speed about once a second. Speeds are megabytes (1,000,000 bytes) per second.
/// Serves one thread at a time; isAuthenticated() serves any.
class ReceiveProgress {
public:
    /// `declaredFileSize` in bytes, below 1 when unknown: no steps are told then. `reports` and
    /// `clock` must outlive this.
    ReceiveProgress(QString displayName, qint64 declaredFileSize, UploadReports& reports,
        const platform::Clock& clock);

    /// A record has been opened: whoever uploads has the key. Does nothing the second time.
    void authenticated();
    [[nodiscard]] bool isAuthenticated() const { return isAuthenticated_; }
    /// `totalBytes`: plaintext bytes so far.
    void advanced(quint64 totalBytes);
    void stored(const ReceivedFile& file);
    void stopped(const QString& reason);

private:
    void reportStep(quint64 totalBytes);
    void reportSpeed(quint64 totalBytes, platform::TimePoint now);

    QString displayName_;
    qint64 declaredFileSize_;
    UploadReports::Upload reports_;
    const platform::Clock& clock_;
    platform::TimePoint startTime_;
    platform::TimePoint lastSpeedTime_;
    quint64 lastSpeedBytes_ = 0;
    quint64 lastProgressStep_ = 0;
    std::atomic<bool> isAuthenticated_ = false;
};

} // namespace ferrylane
