#include "platform/EndLimit.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <system_error>
#include <utility>

namespace platform {

namespace {

constexpr auto givingUpTime = std::chrono::seconds(1);

/// Ends the process. What hangs may be what the last words are written to, so they get a thread of
/// their own and a second.
[[noreturn]] void giveUp(const std::function<void()>& lastWords)
{
    std::promise<void> said; // never destroyed: the thread may come to it late
    try {
        std::thread([&] {
            lastWords();
            said.set_value();
        }).detach();
        said.get_future().wait_for(givingUpTime);
    } catch (const std::system_error&) {
        // There is no thread to be had. The end comes all the same.
    }
    // Without destructors: one of them is what hangs.
    std::_Exit(EXIT_FAILURE);
}

} // namespace

EndLimit::EndLimit(Duration limit, std::function<void()> onGiveUp)
    : thread_([this, limit, onGiveUp = std::move(onGiveUp)] {
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, limit, [this] { return isInTime_; })) return;
        giveUp(onGiveUp);
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
