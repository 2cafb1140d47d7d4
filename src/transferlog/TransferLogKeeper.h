#pragma once

#include "platform/ThreadQueue.h"
#include "transferlog/TransferLog.h"

#include <functional>
#include <memory>
#include <mutex>

namespace ferrylane {

/// Reads and changes the transfer log beside the main thread: a log of years takes its time. What
/// is asked for is done in the order of asking. Called on the main thread, and answers there.
class TransferLogKeeper {
public:
    /// Makes of all entries, the oldest first, what is to be done with them on the main thread. It
    /// runs on the log's own thread.
    using Reader
        = std::function<std::function<void()>(const QList<FerrylaneTransferLogEntry>& entries)>;

    /// Both must outlive this.
    TransferLogKeeper(
        platform::SerialQueue& mainQueue, platform::NotificationCenter& notifications);
    /// Waits until everything is written. What was read is not handed on any more.
    ~TransferLogKeeper();
    TransferLogKeeper(const TransferLogKeeper&) = delete;
    TransferLogKeeper& operator=(const TransferLogKeeper&) = delete;

    /// As appendFerrylaneTransferLog(). What comes while another is being written is written in one
    /// step then.
    void append(const FerrylaneTransfer& transfer);
    /// As trimFerrylaneTransferLog().
    void trim();
    /// Removes the log's file, and so whatever has been appended up to now, and damaged ones that
    /// have been kept.
    void clear();
    void read(Reader reader);

private:
    using Batch = QList<FerrylaneTransferLogEntry>;

    void write(const std::shared_ptr<Batch>& batch);

    platform::SerialQueue& mainQueue_;
    platform::NotificationCenter& notifications_;
    std::shared_ptr<bool> isThere_ = std::make_shared<bool>(true); ///< on the main thread
    std::mutex mutex_;
    std::shared_ptr<Batch> openBatch_; ///< what takes appended entries until it is written
    platform::ThreadQueue queue_{"ferrylane.transferlog"};
};

} // namespace ferrylane
