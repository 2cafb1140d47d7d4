#include "platform/TcpStream.h"

#include "platform/ThreadName.h"
#include "platform/linux/AsioError.h"
#include "platform/linux/FileDescriptor.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>

#include <algorithm>
#include <array>
#include <future>
#include <thread>

#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace platform {

using asio::ip::tcp;

namespace {

// Between two looks at whether a name has been looked up.
constexpr auto lookupPause = std::chrono::milliseconds(10);
// How long less than what is wanted may wait to be taken.
constexpr auto crumbTime = std::chrono::milliseconds(100);
// Most bytes that may wait to be taken.
constexpr std::size_t maximumLowWater = 1048576;
// A connection that this side has made fails (ETIMEDOUT) when the peer acknowledges nothing for so
// long: not what was sent, not the probes of an idle connection. Linux counts a peer that takes no
// bytes for so long, though it is there, among them.
constexpr int unansweredMilliseconds = 50000;

void setOption(int socket, int level, int name, int value)
{
    // Each is an improvement, none a condition.
    static_cast<void>(setsockopt(socket, level, name, &value, sizeof(value)));
}

/// A peer that vanishes without a word (battery, Wi-Fi) would hold the connection for a quarter of
/// an hour while there are bytes for it, and for ever while there are none. Probes make sure that
/// an idle connection has something unanswered by then.
void failWhenUnanswered(int socket)
{
    setOption(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, unansweredMilliseconds);
    setOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, 20);
    setOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, 10);
}

TimePoint after(Duration duration)
{
    return SteadyClock().now() + duration;
}

bool isPast(TimePoint time)
{
    return SteadyClock().now() >= time;
}

bool isTemporary(int error)
{
    return error == EAGAIN || error == EINTR;
}

/// The addresses of a host, or why there are none.
struct Found {
    std::error_code error;
    tcp::resolver::results_type endpoints;
};

Found resolve(const std::string& host, const std::string& service, tcp::resolver::flags flags)
{
    Found found;
    asio::io_context own;
    found.endpoints = tcp::resolver(own).resolve(host, service, flags, found.error);
    found.error = systemError(found.error);
    return found;
}

/// Looks a name up on a thread that nobody waits for: getaddrinfo(3) takes half a minute where no
/// server answers, and nothing interrupts it. Throws std::system_error when there is no thread.
std::future<Found> lookUp(const std::string& host, const std::string& service)
{
    std::promise<Found> promise;
    std::future<Found> future = promise.get_future();
    std::thread([promise = std::move(promise), host, service]() mutable {
        setCurrentThreadName("ferrylane.lookup");
        promise.set_value(resolve(host, service, {}));
    }).detach();
    return future;
}

} // namespace

TcpStream::TcpStream(int socket) : socket_(socket), wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (wakeUp_ >= 0) return;
    const std::error_code error = lastError();
    if (socket_ >= 0) ::close(socket_);
    throw std::system_error(error);
}

TcpStream::~TcpStream()
{
    if (socket_ >= 0) ::close(socket_);
    ::close(wakeUp_);
}

std::error_code TcpStream::connect(const QString& host, std::uint16_t port, Duration limit)
{
    const TimePoint deadline = after(limit);
    const std::string name = host.toStdString();
    const std::string service = std::to_string(port);
    Found found
        = resolve(name, service, tcp::resolver::numeric_host | tcp::resolver::numeric_service);
    if (found.error) {
        std::future<Found> later;
        try {
            later = lookUp(name, service);
        } catch (const std::system_error& noThread) {
            return noThread.code();
        }
        // Asked, so that the thread needs to know nothing that may be gone before it ends.
        while (later.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
            const std::error_code error = wait(-1, 0, std::min(deadline, after(lookupPause)));
            if (error != std::errc::timed_out || isPast(deadline)) return error;
        }
        found = later.get();
    }
    std::error_code error = found.error;
    for (const auto& entry : found.endpoints) {
        const tcp::endpoint endpoint = entry.endpoint();
        error = connectTo(endpoint.data(), static_cast<unsigned>(endpoint.size()), deadline);
        if (!error || isCancelled_ || isPast(deadline)) break;
    }
    return error;
}

std::error_code TcpStream::open(int family)
{
    const std::lock_guard lock(mutex_);
    if (socket_ >= 0) ::close(socket_);
    socket_ = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    return socket_ < 0 ? lastError() : std::error_code();
}

std::error_code TcpStream::connectTo(const sockaddr* address, unsigned size, TimePoint deadline)
{
    if (const std::error_code error = open(address->sa_family)) return error;
    if (::connect(socket_, address, size) != 0) {
        if (errno != EINPROGRESS) return failure();
        if (const std::error_code error = wait(socket_, POLLOUT, deadline)) return error;
        int error = 0;
        socklen_t length = sizeof(error);
        if (getsockopt(socket_, SOL_SOCKET, SO_ERROR, &error, &length) != 0) return failure();
        if (error != 0) return {error, std::generic_category()};
    }
    setOption(socket_, IPPROTO_TCP, TCP_NODELAY, 1);
    failWhenUnanswered(socket_);
    return {};
}

TcpStream::Result TcpStream::receive(
    ByteBuffer& buffer, std::size_t wanted, std::size_t maximum, Duration limit)
{
    TimePoint deadline = after(limit);
    bool isFlowing = true;
    for (std::size_t count = 0;;) {
        const std::size_t before = buffer.size();
        const Result result = receiveSome(buffer, maximum - count);
        if (result.isEnd || result.error) return result;
        const std::size_t received = buffer.size() - before;
        count += received;
        if (count >= wanted) return {};

        // While bytes flow, this is woken once for all that are missing, or after a moment for
        // those that are there; else by the first.
        if (received > 0) deadline = after(limit);
        setLowWater(isFlowing ? wanted - count : 1);
        const std::error_code error
            = wait(socket_, POLLIN, isFlowing ? std::min(deadline, after(crumbTime)) : deadline);
        if (error && !(isFlowing && error == std::errc::timed_out)) return {false, error};
        isFlowing = !error || received > 0;
    }
}

TcpStream::Result TcpStream::receiveSome(ByteBuffer& buffer, std::size_t maximum)
{
    // Also while there are bytes left to read.
    if (isCancelled_) return {false, std::make_error_code(std::errc::operation_canceled)};
    const MutableByteView space = buffer.prepare(maximum);
    const ssize_t count = ::recv(socket_, space.data(), space.size(), 0);
    if (count > 0) {
        buffer.commit(static_cast<std::size_t>(count));
        return {};
    }
    if (count < 0 && isTemporary(errno)) return {};
    if (count < 0 || isCancelled_) return {false, failure()};
    return {true, {}};
}

TcpStream::Result TcpStream::send(ByteView bytes, ByteBuffer& incoming, std::size_t maximum)
{
    while (!bytes.empty()) {
        if (incoming.size() >= maximum) return {true, {}};
        const Result heard = receiveSome(incoming, maximum - incoming.size());
        if (heard.isEnd || heard.error) return heard;

        const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count >= 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        } else if (!isTemporary(errno)) {
            return {false, failure()};
        } else if (const auto error = wait(socket_, POLLIN | POLLOUT, TimePoint::max())) {
            return {false, error};
        }
    }
    return {};
}

void TcpStream::cancel()
{
    const std::lock_guard lock(mutex_);
    isCancelled_ = true;
    // Whoever uses the stream may be held up by a disk; the peer hears of the end at once.
    if (socket_ >= 0) static_cast<void>(::shutdown(socket_, SHUT_RDWR));
    static_cast<void>(eventfd_write(wakeUp_, 1));
}

int TcpStream::release()
{
    const std::lock_guard lock(mutex_);
    if (isCancelled_) return -1;
    setLowWater(1);
    return std::exchange(socket_, -1);
}

void TcpStream::setLowWater(std::size_t bytes)
{
    bytes = std::min(bytes, maximumLowWater);
    if (std::exchange(lowWater_, bytes) == bytes) return;
    setOption(socket_, SOL_SOCKET, SO_RCVLOWAT, static_cast<int>(bytes));
}

std::error_code TcpStream::wait(int socket, short events, TimePoint deadline) const
{
    constexpr Duration longestWait = std::chrono::hours(1);
    for (;;) {
        std::array<pollfd, 2> polled{{{socket, events, 0}, {wakeUp_, POLLIN, 0}}};
        const Duration rest
            = std::clamp(deadline - SteadyClock().now(), Duration::zero(), longestWait);
        const auto seconds = std::chrono::floor<std::chrono::seconds>(rest);
        const timespec timeout{seconds.count(), (rest - seconds).count()};
        const int ready = ppoll(polled.data(), polled.size(), &timeout, nullptr);
        if (ready < 0 && errno != EINTR) return lastError();
        if (polled[1].revents != 0) return std::make_error_code(std::errc::operation_canceled);
        if (polled[0].revents != 0) return {};
        if (isPast(deadline)) return std::make_error_code(std::errc::timed_out);
    }
}

std::error_code TcpStream::failure() const
{
    const std::error_code error = lastError();
    return isCancelled_ ? std::make_error_code(std::errc::operation_canceled) : error;
}

} // namespace platform
