#pragma once

#include "platform/Clock.h"
#include "platform/Tcp.h"

#include <QByteArray>

#include <memory>

namespace ferrylane {

/// One HTTP request and its answer, for a thread that waits. Used by one thread.
///
/// The answer is listened for from the start: a receiver that refuses an upload says so long before
/// the last byte has been sent, and then no longer takes the rest.
///
/// Every wait ends at once when the connection is cancelled from elsewhere. Errors are thrown as
/// SendError (network).
class PhoneConnection {
public:
    explicit PhoneConnection(std::shared_ptr<platform::TcpConnection> connection);
    /// Closes the connection, whatever is under way.
    ~PhoneConnection();
    PhoneConnection(const PhoneConnection&) = delete;
    PhoneConnection& operator=(const PhoneConnection&) = delete;

    /// False when the peer has not accepted within `limit`. Logs what becomes of it where `where`
    /// names the peer.
    [[nodiscard]] bool connect(platform::Duration limit, const QString& where = {});
    /// Sends all of `bytes` and waits until the system has taken them. False when the peer has
    /// answered and closed its side, or has sent more than is read of an answer: the rest is of no
    /// use to it.
    [[nodiscard]] bool send(platform::ByteView bytes);
    struct Answer {
        QByteArray bytes;
        std::error_code error; ///< why it may be incomplete
    };
    /// Waits until the peer has closed its side, the connection has failed or 65536 bytes have
    /// come; for longer than `limit` only with an error (timed out). Gives what the peer sent.
    [[nodiscard]] Answer answer(platform::Duration limit);

private:
    struct Exchange;

    // Shared with the connection's handlers, which may run after this has gone.
    std::shared_ptr<Exchange> exchange_;
};

} // namespace ferrylane
