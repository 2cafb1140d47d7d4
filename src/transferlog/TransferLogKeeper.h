#pragma once

#include "platform/ThreadQueue.h"
#include "transferlog/TransferLog.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <mutex>
#include <utility>

namespace ferrylane {

/// Reads and changes the transfer log beside the main thread: a log of years takes its time. What
/// is asked for is done in the order of asking. Used on the main thread.
class TransferLogKeeper final : public QObject {
    Q_OBJECT

public:
    TransferLogKeeper() = default;
    /// Waits until everything is written. What was read is not handed on any more.
    ~TransferLogKeeper() override;

    /// Appends an entry with the current time, as appendFerrylaneTransferLog(). What comes while
    /// another is being written is written in one step then.
    void append(FerrylaneTransferLogEntry entry);
    /// As trimFerrylaneTransferLog().
    void trim();
    /// Removes the log's file, and so whatever has been appended up to now, and damaged ones that
    /// have been kept.
    void clear();

    /// Calls `make` with all entries, the oldest first, on the log's own thread, and `then` with
    /// what it returned, on the main thread, if `context` is still there.
    template <typename Make, typename Then> void read(QObject* context, Make make, Then then)
    {
        queue_.async(
            [this, context = QPointer(context), make = std::move(make), then = std::move(then)] {
                QMetaObject::invokeMethod(
                    this,
                    [context, then, made = make(loadFerrylaneTransferLog())] {
                        if (context) then(made);
                    },
                    Qt::QueuedConnection);
            });
    }

Q_SIGNALS:
    void ferrylaneTransferLogChanged();

private:
    using Batch = QList<FerrylaneTransferLogEntry>;

    void write(const std::shared_ptr<Batch>& batch);

    std::mutex mutex_;
    std::shared_ptr<Batch> openBatch_; ///< what takes appended entries until it is written
    platform::ThreadQueue queue_{"ferrylane.transferlog"}; ///< last: its thread uses the others
};

} // namespace ferrylane
