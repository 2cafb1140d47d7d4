#include "platform/EndLimit.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <utility>

namespace platform {

namespace {

constexpr auto givingUpTime = std::chrono::seconds(1);

/// What hangs may be what the task wants to write to.
void runForAWhile(const std::function<void()>& task)
{
    std::promise<void> done;
    std::thread([&] {
        task();
        done.set_value();
    }).detach();
    done.get_future().wait_for(givingUpTime);
}

} // namespace

EndLimit::EndLimit(Duration limit, std::function<void()> onGiveUp)
    : thread_([this, limit, onGiveUp = std::move(onGiveUp)] {
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, limit, [this] { return isInTime_; })) return;
        runForAWhile(onGiveUp);
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
