#pragma once

#include "platform/Clock.h"

#include <QtGlobal>

#include <functional>

namespace ferrylane {

/// Tells how the sending of one file gets on: about five times a second, when its last byte has
/// gone, and when the phone has stored it.
class SendProgress {
public:
    /// `fraction`: 0 to 1, and 1 for an empty file. `speed`: MB/s since start(), with
    /// 1 MB = 1,000,000 bytes.
    using Handler = std::function<void(double fraction, double speed)>;

    SendProgress(const platform::Clock& clock, Handler handler);

    /// `fileSize` in bytes.
    void start(qint64 fileSize);
    void advanced(qint64 sentBytes);
    void stored();

private:
    void report(platform::TimePoint now, double fraction);

    const platform::Clock& clock_;
    Handler handler_;
    qint64 fileSize_ = 0;
    qint64 sentBytes_ = 0;
    platform::TimePoint startTime_;
    platform::TimePoint lastReportTime_;
};

} // namespace ferrylane
