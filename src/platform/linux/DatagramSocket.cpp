#include "platform/DatagramSocket.h"

#include "platform/linux/FileDescriptor.h"

#include <array>

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace platform {

namespace {

FileDescriptor required(int descriptor)
{
    if (descriptor < 0) {
        throw std::system_error(std::make_error_code(std::errc::io_error));
    }
    return FileDescriptor(descriptor);
}

void switchOn(const FileDescriptor& socket, int option)
{
    const int on = 1;
    if (::setsockopt(socket.get(), SOL_SOCKET, option, &on, sizeof on) != 0) {
        throw std::system_error(std::make_error_code(std::errc::io_error));
    }
}

sockaddr_in socketAddress(const Endpoint& endpoint)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(endpoint.address);
    address.sin_port = htons(endpoint.port);
    return address;
}

timespec asTimespec(Duration duration)
{
    const auto wholeSeconds = std::chrono::floor<std::chrono::seconds>(duration);
    timespec result{};
    result.tv_sec = wholeSeconds.count();
    result.tv_nsec = (duration - wholeSeconds).count();
    return result;
}

} // namespace

struct DatagramSocket::State {
    explicit State(Duration timeout, std::optional<std::uint16_t> boundTo = {})
        : receiveTimeout(std::max(timeout, Duration::zero()))
        , port(boundTo)
        , socket(port ? openBound(*port) : open())
        , closing(required(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)))
    {
    }

    static FileDescriptor open()
    {
        return required(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    }
    static FileDescriptor openBound(std::uint16_t port);

    /// Outcome::received when there is a datagram to be read.
    [[nodiscard]] Outcome wait(const FileDescriptor& from, Duration atMost) const;
    [[nodiscard]] Received receive(
        const FileDescriptor& from, Duration atMost, MutableByteView buffer) const;
    /// False when the socket's buffer is full.
    [[nodiscard]] bool send(ByteView datagram, const sockaddr_in& to) const;
    /// Puts a new socket on the port in place of this one. False when there is none to be had.
    [[nodiscard]] bool replace();

    Duration receiveTimeout;
    std::optional<std::uint16_t> port;
    FileDescriptor socket;
    FileDescriptor replaced; ///< until what it has received is read
    /// Becomes readable when the socket is closed, and stays so. The socket itself stays open until
    /// the last holder has gone: a receiver must not find another's socket under the same number.
    FileDescriptor closing;
};

FileDescriptor DatagramSocket::State::openBound(std::uint16_t port)
{
    FileDescriptor result = open();
    switchOn(result, SO_REUSEADDR);
    switchOn(result, SO_REUSEPORT);
    const sockaddr_in address = socketAddress({INADDR_ANY, port});
    if (::bind(result.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::system_error(lastError());
    }
    return result;
}

DatagramSocket::Outcome DatagramSocket::State::wait(
    const FileDescriptor& from, Duration atMost) const
{
    std::array<pollfd, 2> waits{{{closing.get(), POLLIN, 0}, {from.get(), POLLIN, 0}}};
    const timespec timeout = asTimespec(atMost);
    const int count = ::ppoll(waits.data(), waits.size(), &timeout, nullptr);
    if (count < 0) return errno == EINTR ? Outcome::timedOut : Outcome::failed;
    if (waits[0].revents != 0) return Outcome::closed;
    return count == 0 ? Outcome::timedOut : Outcome::received;
}

DatagramSocket::Received DatagramSocket::State::receive(
    const FileDescriptor& from, Duration atMost, MutableByteView buffer) const
{
    Received result;
    result.outcome = wait(from, atMost);
    if (result.outcome != Outcome::received) return result;

    sockaddr_in source{};
    socklen_t sourceLength = sizeof source;
    const ssize_t length = ::recvfrom(from.get(), buffer.data(), buffer.size(), MSG_DONTWAIT,
        reinterpret_cast<sockaddr*>(&source), &sourceLength);
    if (length < 0) {
        // The kernel drops a datagram with a wrong checksum only when it is about to be read.
        const bool nothingThere = errno == EAGAIN || errno == EINTR;
        result.outcome = nothingThere ? Outcome::timedOut : Outcome::failed;
        return result;
    }
    result.length = static_cast<std::size_t>(length);
    result.source = {ntohl(source.sin_addr.s_addr), ntohs(source.sin_port)};
    return result;
}

bool DatagramSocket::State::send(ByteView datagram, const sockaddr_in& to) const
{
    return ::sendto(socket.get(), datagram.data(), datagram.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
               reinterpret_cast<const sockaddr*>(&to), sizeof to)
        >= 0
        || errno != EAGAIN;
}

bool DatagramSocket::State::replace()
{
    // One that is not read empty yet has been replaced a moment ago.
    if (!port || replaced.isOpen()) return false;
    try {
        replaced = std::exchange(socket, openBound(*port));
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

QString Endpoint::addressText() const
{
    const auto part
        = [this](unsigned shift) { return QString::number((address >> shift) & 0xFFU); };
    return part(24) + u'.' + part(16) + u'.' + part(8) + u'.' + part(0);
}

DatagramSocket::DatagramSocket(std::unique_ptr<State> state) : state_(std::move(state)) {}

DatagramSocket::~DatagramSocket() = default;

std::shared_ptr<DatagramSocket> DatagramSocket::bound(std::uint16_t port, Duration receiveTimeout)
{
    auto state = std::make_unique<State>(receiveTimeout, port);
    return std::shared_ptr<DatagramSocket>(new DatagramSocket(std::move(state)));
}

std::shared_ptr<DatagramSocket> DatagramSocket::unbound(Duration receiveTimeout)
{
    auto state = std::make_unique<State>(receiveTimeout);
    switchOn(state->socket, SO_BROADCAST);
    return std::shared_ptr<DatagramSocket>(new DatagramSocket(std::move(state)));
}

DatagramSocket::Received DatagramSocket::receive(MutableByteView buffer)
{
    if (state_->replaced.isOpen()) {
        const Received left = state_->receive(state_->replaced, Duration::zero(), buffer);
        if (left.outcome == Outcome::received || left.outcome == Outcome::closed) return left;
        state_->replaced = FileDescriptor();
    }
    return state_->receive(state_->socket, state_->receiveTimeout, buffer);
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
