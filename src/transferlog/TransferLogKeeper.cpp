#include "transferlog/TransferLogKeeper.h"

#include "core/StoragePaths.h"

#include <QFile>

#include <future>
#include <utility>

namespace ferrylane {

TransferLogKeeper::~TransferLogKeeper()
{
    std::promise<void> allDone;
    queue_.async([&allDone] { allDone.set_value(); });
    allDone.get_future().wait();
}

void TransferLogKeeper::append(FerrylaneTransferLogEntry entry)
{
    entry.date = QDateTime::currentDateTimeUtc();
    const std::lock_guard lock(mutex_);
    if (!openBatch_) {
        openBatch_ = std::make_shared<Batch>();
        queue_.async([this, batch = openBatch_] { write(batch); });
    }
    openBatch_->append(std::move(entry));
}

void TransferLogKeeper::write(const std::shared_ptr<Batch>& batch)
{
    {
        const std::lock_guard lock(mutex_);
        if (openBatch_ == batch) openBatch_ = nullptr;
    }
    appendFerrylaneTransferLog(*batch);
    Q_EMIT ferrylaneTransferLogChanged();
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
        QFile::remove(ferrylaneTransferLogURL());
        removeSetAside(ferrylaneTransferLogURL());
    });
}

} // namespace ferrylane
