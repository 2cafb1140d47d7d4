#include "receiver/OpenConnections.h"

#include <utility>

namespace ferrylane {

OpenConnections::Registration::~Registration()
{
    owner_->remove(entry_);
}

void OpenConnections::Registration::headComplete()
{
    const std::lock_guard lock(owner_->mutex_);
    owner_->settle(entry_);
}

std::unique_ptr<OpenConnections::Registration> OpenConnections::add(
    std::shared_ptr<platform::TcpConnection> connection)
{
    const std::lock_guard lock(mutex_);
    incomplete_.push_back({std::move(connection)});
    if (incomplete_.size() > maximumIncompleteHeads) {
        incomplete_.front().connection->cancel();
        // It leaves the lists when its handlers have ended; until then it is not chosen again.
        settle(incomplete_.begin());
    }
    return std::unique_ptr<Registration>(
        new Registration(shared_from_this(), std::prev(incomplete_.end())));
}

void OpenConnections::settle(Entries::iterator entry)
{
    if (std::exchange(entry->isSettled, true)) return;
    settled_.splice(settled_.end(), incomplete_, entry);
}

void OpenConnections::cancelIncompleteHeads()
{
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : incomplete_) {
        entry.connection->cancel();
    }
}

void OpenConnections::cancelAll()
{
    cancelIncompleteHeads();
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : settled_) {
        entry.connection->cancel();
    }
}

void OpenConnections::waitUntilNone()
{
    std::unique_lock lock(mutex_);
    removed_.wait(lock, [this] { return incomplete_.empty() && settled_.empty(); });
}

void OpenConnections::remove(Entries::iterator entry)
{
    std::shared_ptr<platform::TcpConnection> last;
    const std::lock_guard lock(mutex_);
    last = std::move(entry->connection);
    Entries& list = entry->isSettled ? settled_ : incomplete_;
    list.erase(entry);
    removed_.notify_all();
}

} // namespace ferrylane
