#pragma once

#include "platform/TcpStream.h"
#include "sender/TargetAddress.h"

#include <QByteArray>

#include <optional>
#include <stop_token>

namespace ferrylane {

/// One HTTP request and its answer, for a thread that waits. Used by one thread.
///
/// The answer is listened for from the start: a receiver that refuses an upload says so long before
/// the last byte has been sent, and then no longer takes the rest.
///
/// A stop that is requested ends every wait at once. Errors are thrown as SendError (network).
class PhoneConnection {
public:
    explicit PhoneConnection(std::stop_token stop = {});

    /// False when the peer has not accepted within `limit`. Logs what becomes of it where `where`
    /// names the peer.
    [[nodiscard]] bool connect(
        const TargetAddress& address, platform::Duration limit, const QString& where = {});
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
    struct Cancel {
        platform::TcpStream& stream;
        void operator()() const { stream.cancel(); }
    };

    platform::TcpStream stream_;
    platform::ByteBuffer answer_;
    std::optional<std::error_code> end_; ///< how receiving ended
    std::stop_callback<Cancel> onStop_;
};

} // namespace ferrylane
