#pragma once

#include "platform/Clock.h"

#include <QString>

namespace ferrylane::phone {

/// "12.3 MB/s", with 1 MB = 1,000,000 bytes.
[[nodiscard]] QString speedText(qint64 bytes, platform::Duration elapsed);

/// A line that shows how far an upload has got, without a line break: name, bar, share, speed.
[[nodiscard]] QString progressLine(
    const QString& name, qint64 done, qint64 total, platform::Duration elapsed);

/// A progress line on the terminal that is drawn over itself ten times a second and taken away at
/// the end. Draws nothing when the standard error output is no terminal.
class UploadProgress {
public:
    /// `clock` must outlive this. `total` is the file's size in bytes.
    UploadProgress(QString name, qint64 total, const platform::Clock& clock);
    ~UploadProgress();
    UploadProgress(const UploadProgress&) = delete;
    UploadProgress& operator=(const UploadProgress&) = delete;

    void advanced(qint64 done);
    [[nodiscard]] platform::Duration elapsed() const { return clock_.now() - start_; }

private:
    QString name_;
    qint64 total_;
    const platform::Clock& clock_;
    platform::TimePoint start_;
    platform::TimePoint nextDrawing_;
    bool isTerminal_;
};

} // namespace ferrylane::phone
