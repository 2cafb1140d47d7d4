#include "receiver/OpenConnections.h"

#include <algorithm>
#include <utility>

namespace ferrylane {

namespace {

// Descriptors for everything that is no idle connection: windows, buses, files, the upload.
constexpr std::size_t descriptorsOfTheRest = 64;

} // namespace

ConnectionLimits ConnectionLimits::forDescriptors(unsigned descriptors)
{
    const std::size_t spare
        = std::max<std::size_t>(descriptors, descriptorsOfTheRest) - descriptorsOfTheRest;
    return {std::clamp<std::size_t>(spare / 2, 8, 512), std::clamp<std::size_t>(spare / 4, 4, 256)};
}

OpenConnections::Registration::~Registration()
{
    owner_->remove(entry_);
}

void OpenConnections::Registration::enter(Stage stage)
{
    const std::lock_guard lock(owner_->mutex_);
    owner_->enter(entry_, stage);
}

void OpenConnections::Registration::closing()
{
    const std::lock_guard lock(owner_->mutex_);
    owner_->enter(entry_, Stage::closing);
    if (owner_->entriesIn(Stage::closing).size() > owner_->limits_.closing) {
        owner_->cancelOldest(Stage::closing);
    }
}

std::unique_ptr<OpenConnections::Registration> OpenConnections::add(
    std::shared_ptr<platform::TcpConnection> connection)
{
    const std::lock_guard lock(mutex_);
    Entries& heads = entriesIn(Stage::head);
    heads.push_back({std::move(connection)});
    if (heads.size() > limits_.incompleteHeads) cancelOldest(Stage::head);
    return std::unique_ptr<Registration>(
        new Registration(shared_from_this(), std::prev(heads.end())));
}

void OpenConnections::enter(Entries::iterator entry, Stage stage)
{
    // Whatever a cancelled connection still does, it is on its way out.
    if (entry->stage == Stage::cancelled) return;
    Entries& from = entriesIn(entry->stage);
    Entries& to = entriesIn(stage);
    entry->stage = stage;
    to.splice(to.end(), from, entry);
}

void OpenConnections::cancelOldest(Stage stage)
{
    const auto oldest = entriesIn(stage).begin();
    oldest->connection->cancel();
    // It leaves the lists when its handlers have ended; until then it is not chosen again.
    enter(oldest, Stage::cancelled);
}

void OpenConnections::cancelThoseIn(Stage stage)
{
    const std::lock_guard lock(mutex_);
    while (!entriesIn(stage).empty()) {
        cancelOldest(stage);
    }
}

void OpenConnections::cancelIncompleteHeads()
{
    cancelThoseIn(Stage::head);
}

void OpenConnections::cancelAll()
{
    cancelThoseIn(Stage::head);
    cancelThoseIn(Stage::serving);
}

void OpenConnections::waitUntilNone()
{
    std::unique_lock lock(mutex_);
    removed_.wait(lock, [this] {
        return std::all_of(entries_.begin(), entries_.end(),
            [](const Entries& entries) { return entries.empty(); });
    });
}

void OpenConnections::remove(Entries::iterator entry)
{
    std::shared_ptr<platform::TcpConnection> last;
    const std::lock_guard lock(mutex_);
    last = std::move(entry->connection);
    entriesIn(entry->stage).erase(entry);
    removed_.notify_all();
}

} // namespace ferrylane
