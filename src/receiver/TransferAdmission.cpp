#include "receiver/TransferAdmission.h"

#include <utility>

namespace ferrylane {

bool TransferAdmission::tryAdmit(const Connection& connection)
{
    const std::lock_guard lock(mutex_);
    if (!open_ || outboundBusy_ || activeTransferConnection_) return false;
    activeTransferConnection_ = connection;
    return true;
}

void TransferAdmission::release(const platform::TcpConnection& connection)
{
    const std::lock_guard lock(mutex_);
    if (activeTransferConnection_.get() == &connection) activeTransferConnection_ = nullptr;
}

TransferAdmission::Connection TransferAdmission::takeActive()
{
    const std::lock_guard lock(mutex_);
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

bool TransferAdmission::hasActive() const
{
    const std::lock_guard lock(mutex_);
    return activeTransferConnection_ != nullptr;
}

} // namespace ferrylane
