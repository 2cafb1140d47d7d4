#include "receiver/UploadReports.h"

#include "core/Notifications.h"

#include <utility>

namespace ferrylane {

template <typename Change> void UploadReports::tell(const Upload& upload, const Change& change)
{
    const std::lock_guard lock(mutex_);
    if (latest_ != &upload) return;
    change(waiting_);
    deliverSoon();
}

/// Under the lock.
void UploadReports::deliverSoon()
{
    if (std::exchange(isDeliveryDue_, true)) return;
    mainQueue_.async([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->deliver();
    });
}

void UploadReports::Upload::started(const QString& displayName)
{
    const std::lock_guard lock(reports_.mutex_);
    reports_.latest_ = this;
    // What is still to be told of the one before is of no interest any more.
    reports_.waiting_ = {std::move(reports_.waiting_.stored), displayName, 0.0, 0.0, std::nullopt};
    reports_.deliverSoon();
}

void UploadReports::Upload::setFraction(double fraction)
{
    reports_.tell(*this, [&](Waiting& waiting) { waiting.fraction = fraction; });
}

void UploadReports::Upload::setSpeed(double speed)
{
    reports_.tell(*this, [&](Waiting& waiting) { waiting.speed = speed; });
}

void UploadReports::Upload::stored(const ReceivedFile& file, double averageSpeed)
{
    reports_.tell(*this, [](Waiting& waiting) {
        waiting = {std::move(waiting.stored), {}, {}, {}, {}};
    });
    const std::lock_guard lock(reports_.mutex_);
    reports_.waiting_.stored.push_back({file, averageSpeed});
    reports_.deliverSoon();
}

void UploadReports::Upload::stopped(const QString& reason)
{
    reports_.tell(*this, [&](Waiting& waiting) {
        waiting = {std::move(waiting.stored), {}, {}, {}, reason};
    });
}

void UploadReports::deliver()
{
    Waiting waiting;
    {
        const std::lock_guard lock(mutex_);
        waiting = std::exchange(waiting_, {});
        isDeliveryDue_ = false;
    }
    for (const Stored& stored : waiting.stored) {
        deliver(stored);
    }
    if (waiting.started) notifications_.deliver(FerrylaneStarted, *waiting.started);
    if (waiting.speed) notifications_.deliver(FerrylaneSpeed, *waiting.speed);
    if (waiting.fraction) notifications_.deliver(FerrylaneProgress, *waiting.fraction);
    if (waiting.stopped) notifications_.deliver(FerrylaneStopped, *waiting.stopped);
}

void UploadReports::deliver(const Stored& stored)
{
    lastReceivedFile_ = stored.file;
    notifications_.deliver(FerrylaneSpeed, stored.averageSpeed);
    notifications_.deliver(FerrylaneProgress, 1.0);
    notifications_.deliver(FerrylaneReceived, stored.file.name());
}

} // namespace ferrylane
