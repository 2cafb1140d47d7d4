#include "support/TcpClient.h"

#include "support/Waiting.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

namespace {

void setPatience(int descriptor)
{
    const timeval time{patience.count(), 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time));
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof(time));
}

} // namespace

TcpClient::TcpClient(std::uint16_t port)
    : descriptor_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    setPatience(descriptor_);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        const std::error_code error(errno, std::system_category());
        close(descriptor_);
        throw std::system_error(error, "connect");
    }
}

TcpClient::TcpClient(int descriptor, int /*tag*/) : descriptor_(descriptor)
{
    setPatience(descriptor_);
}

TcpClient::~TcpClient()
{
    if (descriptor_ >= 0) close(descriptor_);
}

TcpClient::TcpClient(TcpClient&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1))
{
}

TcpClient& TcpClient::operator=(TcpClient&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

bool TcpClient::send(const QByteArray& bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(descriptor_, bytes.constData() + sent,
            static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (count < 0) return false;
        sent += count;
    }
    return true;
}

void TcpClient::finishSending()
{
    shutdown(descriptor_, SHUT_WR);
}

QByteArray TcpClient::receiveSome()
{
    std::array<char, 65536> buffer; // NOLINT(*-member-init): written before it is read
    const ssize_t count = recv(descriptor_, buffer.data(), buffer.size(), 0);
    return count <= 0 ? QByteArray() : QByteArray(buffer.data(), count);
}

QByteArray TcpClient::receiveAll()
{
    QByteArray received;
    for (;;) {
        const QByteArray more = receiveSome();
        if (more.isEmpty()) return received;
        received += more;
    }
}

bool TcpClient::hasNews(std::chrono::milliseconds wait) const
{
    pollfd query{descriptor_, POLLIN, 0};
    return poll(&query, 1, static_cast<int>(wait.count())) == 1;
}

bool TcpClient::isClosedByPeer() const
{
    pollfd query{descriptor_, POLLRDHUP, 0};
    return poll(&query, 1, 0) == 1;
}

void TcpClient::reset()
{
    const linger atOnce{1, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    close(std::exchange(descriptor_, -1));
}

bool isListening(std::uint16_t port)
{
    try {
        const TcpClient client(port);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

QByteArray answerTo(const QByteArray& request)
{
    TcpClient client;
    client.send(request);
    return client.receiveAll();
}

QByteArray summary(const QByteArray& answer)
{
    const QByteArray statusLine = answer.left(answer.indexOf("\r\n"));
    const qsizetype headEnd = answer.indexOf("\r\n\r\n");
    return statusLine.mid(statusLine.indexOf(' ') + 1) + '|'
        + (headEnd < 0 ? QByteArray() : answer.mid(headEnd + 4));
}

} // namespace support
