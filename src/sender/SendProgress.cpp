#include "sender/SendProgress.h"

#include "core/TransferSpeed.h"

#include <chrono>
#include <utility>

namespace ferrylane {

namespace {

constexpr auto reportInterval = std::chrono::milliseconds(200);

} // namespace

SendProgress::SendProgress(const platform::Clock& clock, Handler handler)
    : clock_(clock), handler_(std::move(handler))
{
}

void SendProgress::start(qint64 fileSize)
{
    fileSize_ = fileSize;
    startTime_ = clock_.now();
    lastReportTime_ = startTime_;
}

void SendProgress::advanced(qint64 sentBytes)
{
    sentBytes_ = sentBytes;
    const auto now = clock_.now();
    if (now - lastReportTime_ < reportInterval && sentBytes < fileSize_) return;
    lastReportTime_ = now;
    report(now, static_cast<double>(sentBytes) / static_cast<double>(fileSize_));
}

void SendProgress::stored()
{
    report(clock_.now(), 1);
}

void SendProgress::report(platform::TimePoint now, double fraction)
{
    const auto sentBytes = static_cast<quint64>(sentBytes_);
    handler_(fraction, megabytesPerSecond(sentBytes, now - startTime_));
}

} // namespace ferrylane
