#pragma once

#include "platform/Clock.h"
#include "platform/SerialQueue.h"
#include "platform/Tcp.h"
#include "platform/ThreadQueue.h"
#include "protocol/PairedTarget.h"
#include "sender/Cancellation.h"
#include "sender/FileSender.h"
#include "sender/SendError.h"

#include <QString>

#include <functional>
#include <memory>
#include <variant>

namespace ferrylane {

/// Sends files to a paired phone, one after the other. All calls come from the main thread, but
/// cancel() from any; all callbacks run on the main queue, and none once the sender has gone. The
/// destructor cancels, and waits for the job to notice.
class FerrylaneV4Sender {
public:
    struct Progress {
        QString fileName;
        int fileIndex; ///< from 0
        int fileCount;
        double fraction; ///< of this file, 0 to 1
        double speed;    ///< MB/s, with 1 MB = 1,000,000 bytes
    };
    /// The number of files sent, or why not all were.
    using Result = std::variant<int, SendError>;
    using ProgressHandler = std::function<void(const Progress&)>;
    using CompletionHandler = std::function<void(const Result&)>;

    /// All must outlive the sender.
    struct Collaborators {
        platform::TcpNetwork& network;
        platform::SerialQueue& mainQueue;
        const platform::Clock& clock;
    };

    /// `senderName`: what the phone is told of who sends.
    FerrylaneV4Sender(
        const Collaborators& collaborators, QString senderName, SendTimes times = SendTimes());
    ~FerrylaneV4Sender();
    FerrylaneV4Sender(const FerrylaneV4Sender&) = delete;
    FerrylaneV4Sender& operator=(const FerrylaneV4Sender&) = delete;

    /// The phone is busy, and its turn is waited for. At most once a file. To be set before send().
    std::function<void()> onWaiting;

    /// Sends `files` in order, up to the first that fails. Waits for as long as the phone
    /// says that it is busy. One job at a time: a second begins when the first has ended.
    void send(const platform::FilePaths& files, const FerrylanePairedTarget& target,
        ProgressHandler progress, CompletionHandler completion);
    /// Ends the running job, which completes with the error "stopped". Does not wait for it.
    void cancel();

private:
    struct Job;

    [[nodiscard]] Result run(const Job& job);
    void sendAll(const Job& job);
    void waitUntilReceiverReady(const TargetAddress& address);
    /// The phone's HTTP status; 0 when it has none to tell in time.
    [[nodiscard]] int transferStatus(const TargetAddress& address);
    [[nodiscard]] SendProgress progressOf(const Job& job, int fileIndex);
    /// Calls on the main queue, unless the sender has gone by then.
    void onMainQueue(std::function<void()> call);

    Collaborators with_;
    QString senderName_;
    SendTimes times_;
    Cancellation cancellation_;
    FileSender fileSender_;
    /// Calls that are under way to the main queue look whether it is still there.
    std::shared_ptr<const int> alive_ = std::make_shared<const int>(0);
    platform::ThreadQueue workerQueue_{"ferrylane.mac.sender.worker"}; ///< last: its job uses all
};

} // namespace ferrylane
