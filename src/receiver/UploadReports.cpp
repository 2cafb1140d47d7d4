#include "receiver/UploadReports.h"

#include "core/Log.h"
#include "core/TransferState.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace ferrylane {

using namespace std::chrono_literals;
using Stage = TransferState::Stage;

namespace {

constexpr quint64 progressSteps = 40;

} // namespace

void UploadReports::unprovenUploadFailed(const QString& reason)
{
    {
        const std::lock_guard lock(mutex_);
        if (failures_ == 0) {
            QMetaObject::invokeMethod(
                this, [this] { QTimer::singleShot(1s, this, &UploadReports::secondIsOver); });
        }
        if (++failures_ > failureLinesASecond) return;
    }
    flLog(QStringLiteral("Secure V4 receive failed: ") + reason);
}

void UploadReports::secondIsOver()
{
    int unlogged = -failureLinesASecond;
    {
        const std::lock_guard lock(mutex_);
        unlogged += std::exchange(failures_, 0);
    }
    if (unlogged <= 0) return;
    flLog(QStringLiteral("Secure V4 receive failed: %1 more in one second").arg(unlogged));
}

/// Under the lock.
void UploadReports::deliverSoon()
{
    if (std::exchange(isDeliveryDue_, true)) return;
    QMetaObject::invokeMethod(this, &UploadReports::deliver, Qt::QueuedConnection);
}

void UploadReports::deliver()
{
    std::unique_lock lock(mutex_);
    const auto files = std::exchange(stored_, {});
    const auto state = std::exchange(waiting_, std::nullopt);
    const bool isStart = std::exchange(isStartWaiting_, false);
    isDeliveryDue_ = false;
    lock.unlock();

    for (const ReceivedFile& file : files) {
        Q_EMIT stored(file);
    }
    if (!state) return;
    if (state->stage == Stage::failed) {
        Q_EMIT stopped(state->reason);
    } else if (isStart) {
        Q_EMIT started(*state);
    } else {
        Q_EMIT progressed(*state);
    }
}

ReceiveProgress::ReceiveProgress(QString displayName, qint64 declaredFileSize,
    UploadReports& reports, const platform::Clock& clock)
    : reports_(reports)
    , clock_(clock)
    , declaredFileSize_(declaredFileSize)
    , state_{.stage = Stage::running, .fileName = std::move(displayName)}
    , startTime_(clock.now())
    , lastSpeedTime_(startTime_)
{
}

void ReceiveProgress::authenticated()
{
    if (std::exchange(isAuthenticated_, true)) return;
    const std::lock_guard lock(reports_.mutex_);
    // What is still to be told of the upload before is of no interest any more.
    reports_.latest_ = this;
    reports_.waiting_ = state_;
    reports_.isStartWaiting_ = true;
    reports_.deliverSoon();
}

void ReceiveProgress::advanced(quint64 totalBytes)
{
    const bool isNewStep = updateFraction(totalBytes);
    if (updateSpeed(totalBytes) || isNewStep) tell();
}

bool ReceiveProgress::updateFraction(quint64 totalBytes)
{
    if (declaredFileSize_ <= 0) return false;
    const quint64 step = std::min(
        totalBytes * progressSteps / static_cast<quint64>(declaredFileSize_), progressSteps);
    if (step <= lastStep_) return false;
    lastStep_ = step;
    state_.fraction = static_cast<double>(step) / static_cast<double>(progressSteps);
    return true;
}

bool ReceiveProgress::updateSpeed(quint64 totalBytes)
{
    const platform::TimePoint now = clock_.now();
    if (now - lastSpeedTime_ < 1s) return false;
    state_.speed = megabytesPerSecond(totalBytes - lastSpeedBytes_, now - lastSpeedTime_);
    lastSpeedBytes_ = totalBytes;
    lastSpeedTime_ = now;
    return true;
}

void ReceiveProgress::tell()
{
    const std::lock_guard lock(reports_.mutex_);
    if (reports_.latest_ != this) return;
    reports_.waiting_ = state_;
    reports_.deliverSoon();
}

void ReceiveProgress::stored(const ReceivedFile& file)
{
    const std::lock_guard lock(reports_.mutex_);
    if (reports_.latest_ == this) {
        reports_.waiting_.reset();
        reports_.isStartWaiting_ = false;
    }
    reports_.stored_.push_back(file);
    reports_.deliverSoon();
}

void ReceiveProgress::stopped(const QString& reason)
{
    if (!isAuthenticated_) return;
    state_.stage = Stage::failed;
    state_.reason = reason;
    tell();
}

} // namespace ferrylane
