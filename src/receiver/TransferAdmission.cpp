#include "receiver/TransferAdmission.h"

#include <utility>

namespace ferrylane {

TransferAdmission::Place::~Place()
{
    const std::lock_guard lock(admission_.mutex_);
    // Another may have taken the place of one that was cancelled.
    if (admission_.activeTransferConnection_.get() != connection_) return;
    admission_.activeTransferConnection_ = nullptr;
    admission_.storing_.reset();
}

bool TransferAdmission::Place::beginStoring(const QString& fileName)
{
    const std::lock_guard lock(admission_.mutex_);
    if (admission_.activeTransferConnection_.get() != connection_) return false;
    admission_.storing_ = fileName;
    return true;
}

std::unique_ptr<TransferAdmission::Place> TransferAdmission::tryAdmit(const Connection& connection)
{
    const std::lock_guard lock(mutex_);
    if (!open_ || outboundBusy_ || activeTransferConnection_) return nullptr;
    auto place = std::make_unique<Place>(*this, connection.get());
    activeTransferConnection_ = connection;
    return place;
}

TransferAdmission::Connection TransferAdmission::takeActive()
{
    const std::lock_guard lock(mutex_);
    if (storing_) return nullptr;
    return std::exchange(activeTransferConnection_, nullptr);
}

void TransferAdmission::setOutboundBusy(bool busy)
{
    const std::lock_guard lock(mutex_);
    outboundBusy_ = busy;
}

void TransferAdmission::setOpen(bool open)
{
    const std::lock_guard lock(mutex_);
    open_ = open;
}

bool TransferAdmission::isBusy() const
{
    const std::lock_guard lock(mutex_);
    return outboundBusy_ || activeTransferConnection_;
}

std::optional<QString> TransferAdmission::storing() const
{
    const std::lock_guard lock(mutex_);
    return storing_;
}

} // namespace ferrylane
