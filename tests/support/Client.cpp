#include "support/Client.h"

#include <array>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

Client::Client(std::uint16_t tcpPort)
    : descriptor_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const timeval limit{10, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(tcpPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close(std::exchange(descriptor_, -1));
    }
}

Client::~Client()
{
    if (descriptor_ >= 0) close(descriptor_);
}

Client::Client(Client&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

bool Client::send(const QByteArray& bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(descriptor_, bytes.constData() + sent,
            static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (count <= 0) return false;
        sent += count;
    }
    return true;
}

QByteArray Client::receiveAll()
{
    QByteArray all;
    std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t count = recv(descriptor_, buffer.data(), buffer.size(), 0);
        if (count <= 0) return all;
        all.append(buffer.data(), count);
    }
}

bool Client::isClosedByPeer() const
{
    char byte = 0;
    const ssize_t count = recv(descriptor_, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return count == 0 || (count < 0 && errno == ECONNRESET);
}

void Client::finishSending()
{
    shutdown(descriptor_, SHUT_WR);
}

void Client::reset()
{
    const linger atOnce{1, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close(std::exchange(descriptor_, -1));
}

QByteArray exchange(const QByteArray& request, std::uint16_t tcpPort)
{
    Client client(tcpPort);
    client.send(request);
    return client.receiveAll();
}

QByteArray summary(const QByteArray& response)
{
    const QByteArray statusLine = response.left(response.indexOf("\r\n"));
    const qsizetype headEnd = response.indexOf("\r\n\r\n");
    return statusLine.mid(statusLine.indexOf(' ') + 1) + '|'
        + (headEnd < 0 ? QByteArray() : response.mid(headEnd + 4));
}

} // namespace support
