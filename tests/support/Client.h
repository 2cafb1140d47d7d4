#pragma once

#include <QByteArray>

#include <cstdint>

namespace support {

/// A blocking TCP client on 127.0.0.1. Every wait ends after ten seconds at the latest.
class Client {
public:
    /// isConnected() tells whether it worked.
    explicit Client(std::uint16_t tcpPort = 8788);
    ~Client();
    Client(Client&& other) noexcept;
    Client& operator=(Client&&) = delete;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    [[nodiscard]] bool isConnected() const { return descriptor_ >= 0; }
    /// Whether all bytes were taken.
    bool send(const QByteArray& bytes);
    /// Everything until the peer closes its side, or what came before an error.
    [[nodiscard]] QByteArray receiveAll();
    /// Whether the peer has closed or reset the connection by now, without anything to be read.
    [[nodiscard]] bool isClosedByPeer() const;
    void finishSending();
    /// Closes so that the peer gets a reset.
    void reset();

private:
    int descriptor_ = -1;
};

/// Sends a request and returns the whole response.
[[nodiscard]] QByteArray exchange(const QByteArray& request, std::uint16_t tcpPort = 8788);

/// Status line's text and body of a response: "200 OK|READY".
[[nodiscard]] QByteArray summary(const QByteArray& response);

} // namespace support
