#pragma once

#include "platform/Tcp.h"

#include <memory>
#include <mutex>

namespace ferrylane {

/// Whether the service is free for an upload, and which connection uploads now. At most one does,
/// and none while files are being sent or the service is off. Safe from any thread; each operation
/// is one atomic step.
class TransferAdmission {
public:
    using Connection = std::shared_ptr<platform::TcpConnection>;

    /// Makes `connection` the active one, unless the service is busy or off.
    [[nodiscard]] bool tryAdmit(const Connection& connection);
    /// The upload over `connection` has ended. Does nothing when another has taken its place.
    void release(const platform::TcpConnection& connection);
    /// Takes the active connection, if there is one, for the caller to cancel. The service is free
    /// at once.
    [[nodiscard]] Connection takeActive();

    void setOutboundBusy(bool busy);
    /// While closed, nothing is admitted.
    void setOpen(bool open);
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] bool hasActive() const;

private:
    mutable std::mutex mutex_;
    Connection activeTransferConnection_;
    bool outboundBusy_ = false;
    bool open_ = true;
};

} // namespace ferrylane
