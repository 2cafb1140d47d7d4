#include "platform/DatagramSocket.h"

#include "platform/linux/FileDescriptor.h"

#include <array>

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace platform {

namespace {

/// `result` of a call that makes what a socket needs.
int haveOrThrow(int result)
{
    if (result < 0) throw std::system_error(std::make_error_code(std::errc::io_error));
    return result;
}

FileDescriptor openDatagram(int option)
{
    FileDescriptor result(haveOrThrow(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)));
    const int on = 1;
    haveOrThrow(::setsockopt(result.get(), SOL_SOCKET, option, &on, sizeof on));
    return result;
}

sockaddr_in socketAddress(const Endpoint& endpoint)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(endpoint.address);
    address.sin_port = htons(endpoint.port);
    return address;
}

FileDescriptor boundTo(std::uint16_t port)
{
    FileDescriptor result = openDatagram(SO_REUSEADDR);
    const int on = 1;
    haveOrThrow(::setsockopt(result.get(), SOL_SOCKET, SO_REUSEPORT, &on, sizeof on));
    const sockaddr_in address = socketAddress({INADDR_ANY, port});
    if (::bind(result.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::system_error(lastError());
    }
    return result;
}

/// The datagram that has come, without waiting for one.
DatagramSocket::Received readDatagram(const FileDescriptor& from, MutableByteView buffer)
{
    sockaddr_in source{};
    socklen_t sourceLength = sizeof source;
    const ssize_t length = ::recvfrom(from.get(), buffer.data(), buffer.size(), MSG_DONTWAIT,
        reinterpret_cast<sockaddr*>(&source), &sourceLength);
    if (length >= 0) {
        return {DatagramSocket::Outcome::received, static_cast<std::size_t>(length),
            {ntohl(source.sin_addr.s_addr), ntohs(source.sin_port)}};
    }
    // The kernel drops a datagram with a wrong checksum only when it is about to be read.
    const bool nothingThere = errno == EAGAIN || errno == EINTR;
    return {
        nothingThere ? DatagramSocket::Outcome::timedOut : DatagramSocket::Outcome::failed, 0, {}};
}

} // namespace

struct DatagramSocket::State {
    std::optional<std::uint16_t> port;
    FileDescriptor socket = port ? boundTo(*port) : openDatagram(SO_BROADCAST);
    FileDescriptor replaced = {}; ///< until what it has received is read
    /// Becomes readable when the socket is closed, and stays so. The socket itself stays open: a
    /// receiver must not find another's socket under the same number.
    FileDescriptor closing{haveOrThrow(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))};

    /// Outcome::received when there is a datagram to be read.
    [[nodiscard]] Outcome wait(Duration atMost) const
    {
        std::array<pollfd, 2> waits{{{closing.get(), POLLIN, 0}, {socket.get(), POLLIN, 0}}};
        const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(atMost).count();
        const int count = ::poll(waits.data(), waits.size(), static_cast<int>(milliseconds));
        if (count < 0) return errno == EINTR ? Outcome::timedOut : Outcome::failed;
        if (waits[0].revents != 0) return Outcome::closed;
        return count == 0 ? Outcome::timedOut : Outcome::received;
    }

    /// False when the socket's buffer is full.
    [[nodiscard]] bool send(ByteView datagram, const sockaddr_in& to) const
    {
        constexpr int flags = MSG_NOSIGNAL | MSG_DONTWAIT;
        return ::sendto(socket.get(), datagram.data(), datagram.size(), flags,
                   reinterpret_cast<const sockaddr*>(&to), sizeof to)
            >= 0
            || errno != EAGAIN;
    }

    /// Puts a new socket on the port in place of this one. False when there is none to be had.
    [[nodiscard]] bool replace()
    {
        // One that is not read empty yet has been replaced a moment ago.
        if (!port || replaced.isOpen()) return false;
        try {
            replaced = std::exchange(socket, boundTo(*port));
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }
};

QString Endpoint::addressText() const
{
    const auto part
        = [this](unsigned shift) { return QString::number((address >> shift) & 0xFFU); };
    return part(24) + u'.' + part(16) + u'.' + part(8) + u'.' + part(0);
}

DatagramSocket::DatagramSocket(std::optional<std::uint16_t> port) : state_(new State{port}) {}

DatagramSocket::~DatagramSocket() = default;

std::unique_ptr<DatagramSocket> DatagramSocket::bound(std::uint16_t port)
{
    return std::unique_ptr<DatagramSocket>(new DatagramSocket(port));
}

std::unique_ptr<DatagramSocket> DatagramSocket::unbound()
{
    return std::unique_ptr<DatagramSocket>(new DatagramSocket(std::nullopt));
}

DatagramSocket::Received DatagramSocket::receive(MutableByteView buffer, Duration atMost)
{
    if (state_->replaced.isOpen()) {
        const Outcome outcome = state_->wait(Duration::zero());
        if (outcome == Outcome::closed) return {outcome, 0, {}};
        const Received left = readDatagram(state_->replaced, buffer);
        if (left.outcome == Outcome::received) return left;
        state_->replaced = FileDescriptor();
    }
    const Outcome outcome = state_->wait(atMost);
    return outcome == Outcome::received ? readDatagram(state_->socket, buffer)
                                        : Received{outcome, 0, {}};
}

void DatagramSocket::send(ByteView datagram, const Endpoint& to)
{
    const sockaddr_in address = socketAddress(to);
    if (state_->send(datagram, address) || !state_->replace()) return;
    // Lost if there is no room in an empty buffer either.
    static_cast<void>(state_->send(datagram, address));
}

void DatagramSocket::close()
{
    // Fails only when the counter is full, and then it is readable, too.
    ::eventfd_write(state_->closing.get(), 1);
}

} // namespace platform
