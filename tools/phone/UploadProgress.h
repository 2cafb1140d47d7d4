#pragma once

#include <QString>

namespace ferrylane::phone {

/// "12.3 MB/s", with 1 MB = 1,000,000 bytes.
[[nodiscard]] QString speedText(double megabytesPerSecond);

/// A progress line on the terminal that is drawn over itself and taken away at the end: name, bar,
/// share, speed. Draws nothing when the standard error output is no terminal.
class UploadProgress {
public:
    explicit UploadProgress(QString name);
    ~UploadProgress();
    UploadProgress(const UploadProgress&) = delete;
    UploadProgress& operator=(const UploadProgress&) = delete;

    /// `fraction`: 0 to 1.
    void advanced(double fraction, double megabytesPerSecond) const;

private:
    QString name_;
    bool isTerminal_;
};

} // namespace ferrylane::phone
