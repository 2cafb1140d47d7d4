#include "transferlog/TransferLogKeeper.h"

#include "core/OwnFiles.h"

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
    if (!openBatch_) {
        openBatch_ = std::make_shared<Batch>();
        queue_.async([this, batch = openBatch_] { write(batch); });
    }
    openBatch_->append(transferLogEntry(transfer));
}

void TransferLogKeeper::write(const std::shared_ptr<Batch>& batch)
{
    {
        const std::lock_guard lock(mutex_);
        if (openBatch_ == batch) openBatch_ = nullptr;
    }
    appendFerrylaneTransferLog(*batch, notifications_);
}

void TransferLogKeeper::trim()
{
    queue_.async(trimFerrylaneTransferLog);
}

void TransferLogKeeper::clear()
{
    const std::lock_guard lock(mutex_);
    openBatch_ = nullptr;
    queue_.async([] {
        platform::removeFile(ferrylaneTransferLogURL());
        removeSetAside(ferrylaneTransferLogURL());
    });
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
