#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Clock.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <system_error>

struct sockaddr;

namespace platform {

/// A TCP connection for one thread, which waits. Only cancel() may be called from another.
class TcpStream {
public:
    struct Result {
        bool isEnd = false; ///< the peer will send no more
        std::error_code error;
    };

    /// Not connected. Throws std::system_error when there is no descriptor to be had.
    TcpStream() : TcpStream(-1) {}
    /// Takes over a connected socket that does not block; closed when this throws.
    explicit TcpStream(int socket);
    ~TcpStream();
    TcpStream(const TcpStream&) = delete;
    TcpStream& operator=(const TcpStream&) = delete;

    /// Connects to a name or a numeric address, whose addresses are tried in turn.
    /// std::errc::timed_out when that takes longer than `limit` in all. The connection then fails
    /// with that error when the peer acknowledges nothing for 50 seconds.
    [[nodiscard]] std::error_code connect(const QString& host, std::uint16_t port, Duration limit);

    /// Waits until at least `wanted` bytes have come, or the end or an error, and appends what is
    /// there to `buffer`, `maximum` bytes at most. std::errc::timed_out when nothing at all comes
    /// for `limit`; a tenth of a second later where more than one byte is wanted.
    [[nodiscard]] Result receive(
        ByteBuffer& buffer, std::size_t wanted, std::size_t maximum, Duration limit);

    /// Sends all of `bytes`, without a time limit, and appends what the peer sends meanwhile to
    /// `incoming`. Stops early, and tells of the end, when the peer has ended its side or
    /// `incoming` holds `maximum` bytes.
    [[nodiscard]] Result send(ByteView bytes, ByteBuffer& incoming, std::size_t maximum);

    /// Ends the connection for both sides at once, and every wait, now and later, with
    /// std::errc::operation_canceled.
    void cancel();

    /// Gives the socket away; -1 when the stream has been cancelled.
    [[nodiscard]] int release();

private:
    [[nodiscard]] std::error_code open(int family);
    [[nodiscard]] std::error_code connectTo(
        const sockaddr* address, unsigned size, TimePoint deadline);
    [[nodiscard]] Result receiveSome(ByteBuffer& buffer, std::size_t maximum);
    /// From how many bytes on the system wakes whoever waits for some.
    void setLowWater(std::size_t bytes);
    [[nodiscard]] std::error_code wait(int socket, short events, TimePoint deadline) const;
    /// What errno says, unless it comes of cancel().
    [[nodiscard]] std::error_code failure() const;

    int socket_;
    int wakeUp_; ///< an eventfd, readable for good once cancelled
    std::size_t lowWater_ = 1;
    std::atomic<bool> isCancelled_ = false;
    std::mutex mutex_; ///< of which descriptor socket_ is
};

} // namespace platform
