#pragma once

#include "platform/Tcp.h"

#include <memory>
#include <mutex>
#include <optional>

namespace ferrylane {

/// Whether the service is free for an upload, and which connection uploads now. At most one does,
/// and none while files are being sent or the service is off. Safe from any thread; each operation
/// is one atomic step.
class TransferAdmission {
public:
    using Connection = std::shared_ptr<platform::TcpConnection>;

    /// An upload's place. The service is free again when it goes. The admission must outlive it.
    class Place {
    public:
        Place(TransferAdmission& admission, const platform::TcpConnection* connection)
            : admission_(admission), connection_(connection)
        {
        }
        ~Place();
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

        /// The file of this name is whole and is about to be stored: takeActive() leaves it alone
        /// from now on. False when it has been taken already.
        [[nodiscard]] bool beginStoring(const QString& fileName);

    private:
        TransferAdmission& admission_;
        const platform::TcpConnection* const connection_;
    };

    /// Makes `connection` the active one; null when the service is busy or off.
    [[nodiscard]] std::unique_ptr<Place> tryAdmit(const Connection& connection);
    /// Takes the active connection, if there is one, for the caller to cancel. The service is free
    /// at once. One whose file is being stored stays: it is too late to stop it.
    [[nodiscard]] Connection takeActive();

    void setOutboundBusy(bool busy);
    /// While closed, nothing is admitted.
    void setOpen(bool open);
    [[nodiscard]] bool isBusy() const;
    /// The name of the file that is being stored, if one is.
    [[nodiscard]] std::optional<QString> storing() const;

private:
    mutable std::mutex mutex_;
    Connection activeTransferConnection_;
    std::optional<QString> storing_;
    bool outboundBusy_ = false;
    bool open_ = true;
};

} // namespace ferrylane
