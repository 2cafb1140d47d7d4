#include "camera/PairingScanner.h"

#include "core/Log.h"
#include "protocol/PairingQR.h"

#include <QScopeGuard>

#include <chrono>
#include <exception>
#include <mutex>
#include <utility>

namespace ferrylane {

namespace {

constexpr auto scanInterval = std::chrono::milliseconds(200);

} // namespace

class PairingScanner::Scan : public std::enable_shared_from_this<Scan> {
public:
    Scan(Collaborators collaborators, Handlers handlers)
        : with_(std::move(collaborators))
        , handlers_(std::move(handlers))
        , lastVisionTime_(with_.clock.now())
    {
    }

    void offer(const std::shared_ptr<const CameraFrame>& frame)
    {
        if (!tryBegin()) return;
        with_.visionQueue.async([self = shared_from_this(), frame] {
            const auto end = qScopeGuard([&] {
                const std::lock_guard lock(self->mutex_);
                self->visionBusy_ = false;
            });
            self->scan(*frame);
        });
    }

    void judge(const QString& text)
    {
        const bool isValid = parseFerrylanePairingQR(text).has_value();
        if (isValid) {
            const std::lock_guard lock(mutex_);
            if (std::exchange(finished_, true)) return;
        }
        with_.mainQueue.async([self = shared_from_this(), isValid, text] {
            if (self->isClosed_) return;
            if (isValid) {
                self->handlers_.onCode(text);
            } else {
                self->handlers_.onInvalidCode();
            }
        });
    }

    void close()
    {
        isClosed_ = true;
        const std::lock_guard lock(mutex_);
        finished_ = true;
    }

private:
    bool tryBegin()
    {
        const std::lock_guard lock(mutex_);
        const platform::TimePoint now = with_.clock.now();
        if (finished_ || visionBusy_ || now - lastVisionTime_ < scanInterval) return false;
        lastVisionTime_ = now;
        visionBusy_ = true;
        return true;
    }

    /// A frame that cannot be worked on leaves the next ones their chance.
    void scan(const CameraFrame& frame)
    {
        try {
            if (const auto text = with_.detect(frame.luminance())) judge(*text);
        } catch (const std::exception& error) {
            flLog(QStringLiteral("Vision QR scan error: ") + QString::fromUtf8(error.what()));
        }
    }

    const Collaborators with_;
    const Handlers handlers_;
    std::mutex mutex_;
    bool finished_ = false;
    bool visionBusy_ = false;
    platform::TimePoint lastVisionTime_;
    bool isClosed_ = false; ///< on the main thread
};

PairingScanner::PairingScanner(Collaborators collaborators, Handlers handlers)
    : scan_(std::make_shared<Scan>(std::move(collaborators), std::move(handlers)))
{
}

PairingScanner::~PairingScanner()
{
    scan_->close();
}

void PairingScanner::offer(const std::shared_ptr<const CameraFrame>& frame)
{
    scan_->offer(frame);
}

void PairingScanner::offerText(const QString& text)
{
    scan_->judge(text);
}

} // namespace ferrylane
