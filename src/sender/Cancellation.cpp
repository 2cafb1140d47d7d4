#include "sender/Cancellation.h"

#include "sender/SendError.h"

#include <utility>

namespace ferrylane {

void Cancellation::clear()
{
    const std::lock_guard lock(mutex_);
    cancelled_ = false;
}

void Cancellation::cancel()
{
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
    changed_.notify_all();
    if (const auto connection = std::exchange(activeConnection_, nullptr)) connection->cancel();
}

bool Cancellation::isCancelled() const
{
    const std::lock_guard lock(mutex_);
    return cancelled_;
}

void Cancellation::check() const
{
    if (isCancelled()) throw send_errors::stopped();
}

void Cancellation::sleepFor(platform::Duration duration) const
{
    std::unique_lock lock(mutex_);
    if (changed_.wait_for(lock, duration, [this] { return cancelled_; })) {
        throw send_errors::stopped();
    }
}

Cancellation::Watch::Watch(
    Cancellation& cancellation, std::shared_ptr<platform::TcpConnection> connection)
    : cancellation_(cancellation)
{
    const std::lock_guard lock(cancellation_.mutex_);
    if (cancellation_.cancelled_) throw send_errors::stopped();
    cancellation_.activeConnection_ = std::move(connection);
}

Cancellation::Watch::~Watch()
{
    const std::lock_guard lock(cancellation_.mutex_);
    cancellation_.activeConnection_ = nullptr;
}

} // namespace ferrylane
