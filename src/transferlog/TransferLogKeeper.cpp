#include "transferlog/TransferLogKeeper.h"

#include <future>
#include <utility>

namespace ferrylane {

TransferLogKeeper::TransferLogKeeper(
    platform::SerialQueue& mainQueue, platform::NotificationCenter& notifications)
    : mainQueue_(mainQueue), notifications_(notifications)
{
}

TransferLogKeeper::~TransferLogKeeper()
{
    *isThere_ = false;
    std::promise<void> allDone;
    queue_.async([&allDone] { allDone.set_value(); });
    allDone.get_future().wait();
}

void TransferLogKeeper::append(const FerrylaneTransfer& transfer)
{
    const std::lock_guard lock(mutex_);
    pending_.append(transferLogEntry(transfer));
    if (pending_.size() == 1) queue_.async([this] { writePending(); });
}

void TransferLogKeeper::writePending()
{
    QList<FerrylaneTransferLogEntry> entries;
    {
        const std::lock_guard lock(mutex_);
        entries.swap(pending_);
    }
    appendFerrylaneTransferLog(entries, notifications_);
}

void TransferLogKeeper::trim()
{
    queue_.async(trimFerrylaneTransferLog);
}

void TransferLogKeeper::read(Reader reader)
{
    queue_.async([this, isThere = isThere_, reader = std::move(reader)] {
        mainQueue_.async([isThere, handOn = reader(loadFerrylaneTransferLog())] {
            if (*isThere) handOn();
        });
    });
}

} // namespace ferrylane
