#include "platform/EndLimit.h"

#include <cstdlib>
#include <utility>

namespace platform {

EndLimit::EndLimit(Duration limit, std::function<void()> onGiveUp)
    : thread_([this, limit, onGiveUp = std::move(onGiveUp)] {
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, limit, [this] { return isInTime_; })) return;
        onGiveUp();
        // Without destructors: one of them is what hangs.
        std::_Exit(EXIT_FAILURE);
    })
{
}

EndLimit::~EndLimit()
{
    {
        const std::lock_guard lock(mutex_);
        isInTime_ = true;
        changed_.notify_all();
    }
    thread_.join();
}

} // namespace platform
