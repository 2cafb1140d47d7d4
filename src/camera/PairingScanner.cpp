#include "camera/PairingScanner.h"

#include "camera/Camera.h"
#include "camera/QRDetector.h"
#include "core/Log.h"
#include "protocol/PairingLink.h"

#include <chrono>
#include <exception>
#include <mutex>
#include <utility>

namespace ferrylane {

namespace {

constexpr auto scanInterval = std::chrono::milliseconds(200);

/// A frame that cannot be worked on leaves the next ones their chance.
std::optional<QString> textIn(const QVideoFrame& frame)
{
    try {
        return detectQRCode(luminanceOf(frame));
    } catch (const std::exception& error) {
        flLog(QStringLiteral("Vision QR scan error: ") + QString::fromUtf8(error.what()));
        return std::nullopt;
    }
}

} // namespace

struct PairingScanner::Scan {
    std::mutex mutex;
    PairingScanner* owner = nullptr; ///< null when it has gone
    bool isOver = false;             ///< a phone's code was found
    bool isBusy = false;
    platform::TimePoint lastTime;
};

PairingScanner::PairingScanner(platform::ThreadQueue& visionQueue, const platform::Clock& clock)
    : visionQueue_(visionQueue), clock_(clock), scan_(std::make_shared<Scan>())
{
    scan_->owner = this;
    scan_->lastTime = clock.now();
}

PairingScanner::~PairingScanner()
{
    const std::lock_guard lock(scan_->mutex);
    scan_->owner = nullptr;
}

void PairingScanner::offer(const QVideoFrame& frame)
{
    {
        const std::lock_guard lock(scan_->mutex);
        const platform::TimePoint now = clock_.now();
        if (scan_->isOver || scan_->isBusy || now - scan_->lastTime < scanInterval) return;
        scan_->lastTime = now;
        scan_->isBusy = true;
    }
    visionQueue_.async([scan = scan_, frame] {
        const auto text = textIn(frame);
        const std::lock_guard lock(scan->mutex);
        scan->isBusy = false;
        if (!text || !scan->owner) return;
        QMetaObject::invokeMethod(
            scan->owner, [owner = scan->owner, text = *text] { owner->offerText(text); },
            Qt::QueuedConnection);
    });
}

void PairingScanner::offerText(const QString& text)
{
    const bool isValid = parseFerrylanePairingQR(text).has_value();
    {
        const std::lock_guard lock(scan_->mutex);
        if (scan_->isOver) return;
        scan_->isOver = isValid;
    }
    if (isValid) {
        Q_EMIT codeFound(text);
    } else {
        Q_EMIT invalidCode();
    }
}

} // namespace ferrylane
