#pragma once

#include <QByteArray>

#include <chrono>
#include <cstdint>

namespace support {

/// A blocking client socket. An operation that cannot go on ends after `patience` (Waiting.h).
class TcpClient {
public:
    /// Connects to 127.0.0.1. Throws std::system_error.
    explicit TcpClient(std::uint16_t port = 8788);
    /// The other end of a connection that a test's own server has accepted.
    [[nodiscard]] static TcpClient ofDescriptor(int descriptor) { return TcpClient(descriptor, 0); }
    /// Closes the connection.
    ~TcpClient();
    TcpClient(TcpClient&& other) noexcept;
    TcpClient& operator=(TcpClient&& other) noexcept;
    TcpClient(const TcpClient&) = delete;
    TcpClient& operator=(const TcpClient&) = delete;

    /// False when the peer does not take all of it.
    bool send(const QByteArray& bytes);
    /// Tells the peer that no more will be sent.
    void finishSending();
    /// What the peer sends until it closes, or until the connection fails or patience ends.
    [[nodiscard]] QByteArray receiveAll();
    /// The next bytes; none at the end.
    [[nodiscard]] QByteArray receiveSome();
    /// Whether there is something to be received: bytes, or the end of the connection.
    [[nodiscard]] bool hasNews(std::chrono::milliseconds wait = {}) const;
    /// Closes with a reset (RST), as a peer does that has lost the connection.
    void reset();
    /// Whether the peer has closed its side, or the whole connection.
    [[nodiscard]] bool isClosedByPeer() const;

private:
    TcpClient(int descriptor, int /*tag*/);

    int descriptor_;
};

/// Whether something accepts connections on 127.0.0.1.
[[nodiscard]] bool isListening(std::uint16_t port = 8788);

inline const QByteArray statusRequest = "GET /transfer-status HTTP/1.1\r\n\r\n";

/// Connects, sends `request` and returns the whole answer.
[[nodiscard]] QByteArray answerTo(const QByteArray& request);

/// Status and body of an answer: "200 OK|READY".
[[nodiscard]] QByteArray summary(const QByteArray& answer);

} // namespace support
