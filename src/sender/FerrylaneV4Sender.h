#pragma once

#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/SecretKey.h"
#include "platform/ThreadQueue.h"
#include "protocol/PairingLink.h"
#include "sender/SendError.h"
#include "sender/TargetAddress.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <mutex>
#include <optional>
#include <stop_token>
#include <variant>

namespace ferrylane {

/// How long a send waits for what.
struct SendTimes {
    platform::Duration connectLimit = std::chrono::seconds(15);
    platform::Duration statusLimit = std::chrono::seconds(5);
    platform::Duration busyPause = std::chrono::seconds(1);
    /// For the answer once all is sent: a slow disk may have gigabytes to store first.
    platform::Duration answerLimit = std::chrono::minutes(5);
};

/// Sends files to a paired phone, one after the other. Lives on the main thread, where its signals
/// are emitted; none once it has gone. The destructor cancels, and waits for the job to notice.
class FerrylaneV4Sender final : public QObject {
    Q_OBJECT

public:
    struct Progress {
        QString fileName;
        int fileIndex; ///< from 0
        int fileCount;
        double fraction; ///< of this file, 0 to 1
        double speed;    ///< of this file, MB/s, with 1 MB = 1,000,000 bytes
    };
    /// The number of files sent, or why not all were.
    using Result = std::variant<int, SendError>;

    /// `senderName`: what the phone is told of who sends. Throws std::system_error when there is no
    /// thread to be had.
    explicit FerrylaneV4Sender(QString senderName, SendTimes times = SendTimes());
    ~FerrylaneV4Sender() override;

    /// Sends `files` in order, up to the first that fails. Waits for as long as the phone
    /// says that it is busy. One job at a time: a second begins when the first has ended.
    void send(const platform::FilePaths& files, const FerrylanePairedTarget& target);
    /// Ends the running job, which completes with the error "stopped" and tells nothing else. Does
    /// not wait for it.
    void cancel();

Q_SIGNALS:
    /// The phone is busy, and its turn is waited for. At most once a file.
    void waiting();
    /// The latest state: about five times a second, when a file's last byte has gone, and when the
    /// phone has stored it. One that is not yet told is replaced by the next.
    void progressed(const ferrylane::FerrylaneV4Sender::Progress& progress);
    /// Once for each send().
    void completed(const ferrylane::FerrylaneV4Sender::Result& result);

private:
    struct Job;

    // On the job's thread.
    [[nodiscard]] Result run(const Job& job);
    void sendAll(const Job& job);
    void waitUntilReceiverReady(const Job& job, const TargetAddress& address);
    [[nodiscard]] int transferStatus(const Job& job, const TargetAddress& address);
    void sendFile(const Job& job, const TargetAddress& address, const platform::SecretKey& key,
        const platform::FilePath& path, Progress progress);
    void report(const Job& job, const Progress& progress);

    const QString senderName_;
    const SendTimes times_;
    std::stop_source stop_; ///< of the latest job

    std::mutex mutex_;
    std::optional<Progress> untold_; ///< under the lock

    platform::ThreadQueue workerQueue_{"ferrylane.mac.sender.worker"}; ///< last: its job uses all
};

} // namespace ferrylane
