#pragma once

#include "platform/NotificationCenter.h"
#include "platform/SerialQueue.h"

#include <QString>

#include <memory>
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

/// Tells the main thread how uploads get on, by the notifications "FerrylaneStarted",
/// "FerrylaneSpeed", "FerrylaneProgress", "FerrylaneReceived" and "FerrylaneStopped".
///
/// However long the main thread is busy, one message waits for it, with the state of the latest
/// upload. Only the files that have been stored meanwhile are told one by one. From any thread.
class UploadReports : public std::enable_shared_from_this<UploadReports> {
public:
    /// Both must outlive this.
    UploadReports(platform::SerialQueue& mainQueue, platform::NotificationCenter& notifications)
        : mainQueue_(mainQueue), notifications_(notifications)
    {
    }

    /// Tells of one upload. What it says when the next one has started is not told any more, unless
    /// it is that the file has been stored: one that is cut off may hear of it late.
    class Upload {
    public:
        explicit Upload(UploadReports& reports) : reports_(reports) {}

        void started(const QString& displayName);
        void setFraction(double fraction);
        /// In megabytes (1,000,000 bytes) a second, as the next.
        void setSpeed(double speed);
        void stored(const ReceivedFile& file, double averageSpeed);
        void stopped(const QString& reason);

    private:
        UploadReports& reports_;
    };

    /// On the main thread: tells what waits at once.
    void deliver();
    /// On the main thread: while "FerrylaneReceived" is delivered, the file that it is about.
    [[nodiscard]] const std::optional<ReceivedFile>& lastReceivedFile() const
    {
        return lastReceivedFile_;
    }

private:
    struct Stored {
        ReceivedFile file;
        double averageSpeed = 0;
    };
    struct Waiting {
        std::vector<Stored> stored;
        // Of the latest upload.
        std::optional<QString> started;
        std::optional<double> speed;
        std::optional<double> fraction;
        std::optional<QString> stopped;
    };

    /// Changes what waits to be told of an upload, if it is the latest, and has it delivered soon.
    template <typename Change> void tell(const Upload& upload, const Change& change);
    void deliverSoon();
    void deliver(const Stored& stored);

    platform::SerialQueue& mainQueue_;
    platform::NotificationCenter& notifications_;
    std::optional<ReceivedFile> lastReceivedFile_;

    std::mutex mutex_;
    const Upload* latest_ = nullptr;
    Waiting waiting_;
    bool isDeliveryDue_ = false;
};

} // namespace ferrylane
