#include "receiver/ReceiveProgress.h"

#include "core/Notifications.h"
#include "core/TransferSpeed.h"

#include <algorithm>

namespace ferrylane {

namespace {

constexpr quint64 progressSteps = 40;

} // namespace

ReceiveProgress::ReceiveProgress(qint64 declaredFileSize,
    platform::NotificationCenter& notifications, const platform::Clock& clock)
    : declaredFileSize_(declaredFileSize)
    , notifications_(notifications)
    , clock_(clock)
    , startTime_(clock.now())
    , lastSpeedTime_(startTime_)
{
}

void ReceiveProgress::started(const QString& displayName)
{
    notifications_.post(FerrylaneStarted, displayName);
    notifications_.post(FerrylaneSpeed, 0.0);
    notifications_.post(FerrylaneProgress, 0.0);
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
    notifications_.post(
        FerrylaneProgress, static_cast<double>(step) / static_cast<double>(progressSteps));
}

void ReceiveProgress::reportSpeed(quint64 totalBytes, platform::TimePoint now)
{
    if (now - lastSpeedTime_ < std::chrono::seconds(1)) return;
    notifications_.post(
        FerrylaneSpeed, megabytesPerSecond(totalBytes - lastSpeedBytes_, now - lastSpeedTime_));
    lastSpeedBytes_ = totalBytes;
    lastSpeedTime_ = now;
}

void ReceiveProgress::stored(quint64 totalBytes, const QString& storedName)
{
    notifications_.post(FerrylaneSpeed, megabytesPerSecond(totalBytes, clock_.now() - startTime_));
    notifications_.post(FerrylaneProgress, 1.0);
    notifications_.post(FerrylaneReceived, storedName);
}

void ReceiveProgress::stopped(const QString& reason)
{
    notifications_.post(FerrylaneStopped, reason);
}

} // namespace ferrylane
