#include "receiver/FailureLog.h"

#include "core/Log.h"

#include <chrono>
#include <utility>

namespace ferrylane {

void FailureLog::uploadFailed(const QString& reason)
{
    {
        const std::lock_guard lock(mutex_);
        if (count_ == 0) {
            timer_.after(std::chrono::seconds(1), [weak = weak_from_this()] {
                if (const auto self = weak.lock()) self->secondIsOver();
            });
        }
        if (++count_ > linesASecond) return;
    }
    flLog(QStringLiteral("Secure V4 receive failed: ") + reason);
}

void FailureLog::secondIsOver()
{
    int unlogged = -linesASecond;
    {
        const std::lock_guard lock(mutex_);
        unlogged += std::exchange(count_, 0);
    }
    if (unlogged <= 0) return;
    flLog(QStringLiteral("Secure V4 receive failed: %1 more in one second").arg(unlogged));
}

} // namespace ferrylane
