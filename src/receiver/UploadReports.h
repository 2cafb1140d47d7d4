#pragma once

#include "core/TransferState.h"
#include "platform/Clock.h"

#include <QObject>
#include <QString>

#include <mutex>
#include <optional>
#include <vector>

namespace ferrylane {

/// A file that has been received and stored.
struct ReceivedFile {
    QString path;
    qint64 size = 0; ///< bytes

    [[nodiscard]] QString name() const { return path.section(u'/', -1); }
};

/// Tells the main thread, where it lives, how uploads get on. ReceiveProgress tells it from the
/// upload's thread.
///
/// However long the main thread is busy, one event waits for it, with the state of the latest
/// upload. Only the files that have been stored meanwhile are told one by one.
class UploadReports final : public QObject {
    Q_OBJECT

public:
    /// Uploads that failed before anything of them was authentic, which anybody can make: so many
    /// a second are logged in lines of their own, the others of that second in one with their
    /// number.
    static constexpr int failureLinesASecond = 10;

    /// Logs such a failure. From any thread.
    void unprovenUploadFailed(const QString& reason);
    /// Tells what waits at once.
    void deliver();

Q_SIGNALS:
    void started(const TransferState& state);
    void progressed(const TransferState& state);
    void stored(const ReceivedFile& file);
    void stopped(const QString& reason);

private:
    friend class ReceiveProgress;

    void deliverSoon();
    void secondIsOver();

    std::mutex mutex_;
    std::vector<ReceivedFile> stored_;
    const void* latest_ = nullptr;         ///< upload
    std::optional<TransferState> waiting_; ///< of the latest upload
    bool isStartWaiting_ = false;
    bool isDeliveryDue_ = false;
    int failures_ = 0; ///< in the second that has begun with the first
};

/// Tells how one upload gets on: nothing before it has proved authentic, then at most 40 steps of
/// progress, and the speed about once a second. What it says when the next upload has started is
/// not told any more, unless it is that the file has been stored. Used by the upload's thread.
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
    [[nodiscard]] bool updateFraction(quint64 totalBytes);
    [[nodiscard]] bool updateSpeed(quint64 totalBytes);
    /// Gives the state on, unless another upload has begun.
    void tell();

    UploadReports& reports_;
    const platform::Clock& clock_;
    const qint64 declaredFileSize_;
    TransferState state_;
    platform::TimePoint startTime_;
    platform::TimePoint lastSpeedTime_;
    quint64 lastSpeedBytes_ = 0;
    quint64 lastStep_ = 0;
    bool isAuthenticated_ = false;
};

} // namespace ferrylane
