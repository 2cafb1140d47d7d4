#pragma once

#include "platform/Bytes.h"
#include "platform/Clock.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

namespace platform {

/// An IPv4 address and a port.
struct Endpoint {
    std::uint32_t address = 0; ///< host byte order
    std::uint16_t port = 0;

    [[nodiscard]] QString addressText() const; ///< dotted decimal
    bool operator==(const Endpoint&) const = default;
};

/// An IPv4 UDP socket that waits to receive, and never to send. One thread uses it; close() may be
/// called from any other.
class DatagramSocket {
public:
    enum class Outcome { received, timedOut, closed, failed };
    struct Received {
        Outcome outcome = Outcome::failed;
        /// Bytes written, at most the buffer's size; 0 is an empty datagram.
        std::size_t length = 0;
        Endpoint source;
    };

    /// Bound to `port` on every interface, shared with others that bind it so (SO_REUSEADDR and
    /// SO_REUSEPORT). Throws std::system_error, with EIO when there is no socket to be had, else
    /// with what bind(2) said.
    [[nodiscard]] static std::unique_ptr<DatagramSocket> bound(std::uint16_t port);
    /// Not bound; may send to broadcast addresses. Throws std::system_error.
    [[nodiscard]] static std::unique_ptr<DatagramSocket> unbound();

    ~DatagramSocket();
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;

    /// A datagram longer than the buffer leaves its first bytes. A wait that was interrupted, or
    /// that ended with a datagram found damaged, counts as timed out.
    [[nodiscard]] Received receive(MutableByteView buffer, Duration atMost = std::chrono::hours(1));
    /// Errors are ignored: a datagram may get lost in any case.
    ///
    /// Datagrams to hosts of the local network that do not answer stay in the socket's buffer for
    /// seconds. When they fill it, a bound socket gives them up to the system and goes on with a
    /// new one on the same port, so that those to other hosts are not held up.
    void send(ByteView datagram, const Endpoint& to);
    /// Ends receive() with Outcome::closed, the waiting one at once and all from then on. The port
    /// is free once the socket has been destroyed.
    void close();

private:
    struct State;
    explicit DatagramSocket(std::optional<std::uint16_t> port);

    std::unique_ptr<State> state_;
};

} // namespace platform
