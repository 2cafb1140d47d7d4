#include "receiver/ReceiveProgress.h"

#include "core/TransferSpeed.h"

#include <algorithm>
#include <utility>

namespace ferrylane {

namespace {

constexpr quint64 progressSteps = 40;

} // namespace

ReceiveProgress::ReceiveProgress(QString displayName, qint64 declaredFileSize,
    UploadReports& reports, const platform::Clock& clock)
    : displayName_(std::move(displayName))
    , declaredFileSize_(declaredFileSize)
    , reports_(reports)
    , clock_(clock)
    , startTime_(clock.now())
    , lastSpeedTime_(startTime_)
{
}

void ReceiveProgress::authenticated()
{
    if (!isAuthenticated_.exchange(true)) reports_.started(displayName_);
}

void ReceiveProgress::advanced(quint64 totalBytes)
{
    // Before anybody hears of the step, so that both tell of one moment.
    const platform::TimePoint now = clock_.now();
    reportStep(totalBytes);
    reportSpeed(totalBytes, now);
}

void ReceiveProgress::reportStep(quint64 totalBytes)
{
    if (declaredFileSize_ <= 0) return;
    const quint64 step = std::min(
        totalBytes * progressSteps / static_cast<quint64>(declaredFileSize_), progressSteps);
    if (step <= lastProgressStep_) return;
    lastProgressStep_ = step;
    reports_.setFraction(static_cast<double>(step) / static_cast<double>(progressSteps));
}

void ReceiveProgress::reportSpeed(quint64 totalBytes, platform::TimePoint now)
{
    if (now - lastSpeedTime_ < std::chrono::seconds(1)) return;
    reports_.setSpeed(megabytesPerSecond(totalBytes - lastSpeedBytes_, now - lastSpeedTime_));
    lastSpeedBytes_ = totalBytes;
    lastSpeedTime_ = now;
}

void ReceiveProgress::stored(const ReceivedFile& file)
{
    reports_.stored(
        file, megabytesPerSecond(static_cast<quint64>(file.size), clock_.now() - startTime_));
}

void ReceiveProgress::stopped(const QString& reason)
{
    if (isAuthenticated_) reports_.stopped(reason);
}

} // namespace ferrylane
