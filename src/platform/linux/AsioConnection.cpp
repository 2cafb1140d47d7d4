#include "platform/linux/AsioConnection.h"

#include "platform/ThreadName.h"
#include "platform/linux/AsioError.h"

#include <asio/buffer.hpp>
#include <asio/connect.hpp>
#include <asio/post.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <thread>

#include <netinet/tcp.h>

namespace platform {

namespace {

// How long the peer has to take the last message and close its side.
constexpr auto closingTime = std::chrono::seconds(1);
// Between two looks at whether a name has been looked up.
constexpr auto lookupPause = std::chrono::milliseconds(10);
// A connection that this side has made fails (ETIMEDOUT) when the peer acknowledges nothing for so
// long: not what was sent, not the probes of an idle connection. Linux counts a peer that takes no
// bytes for so long, though it is there, among them.
constexpr std::chrono::duration<int, std::milli> unansweredLimit = std::chrono::seconds(50);

/// A peer that vanishes without a word (battery, Wi-Fi) would hold the connection for a quarter of
/// an hour while there are bytes for it, and for ever while there are none. Probes make sure that
/// an idle connection has something unanswered by then.
void failWhenUnanswered(asio::ip::tcp::socket& socket)
{
    using asio::detail::socket_option::integer;
    std::error_code ignored; // Each is an improvement, none a condition.
    socket.set_option(integer<IPPROTO_TCP, TCP_USER_TIMEOUT>(unansweredLimit.count()), ignored);
    socket.set_option(asio::socket_base::keep_alive(true), ignored);
    socket.set_option(integer<IPPROTO_TCP, TCP_KEEPIDLE>(20), ignored);
    socket.set_option(integer<IPPROTO_TCP, TCP_KEEPINTVL>(10), ignored);
}

} // namespace

/// What looking up a host name has found. It is done on a thread that nobody waits for, who shares
/// this: getaddrinfo(3) takes half a minute where no server answers, and nothing interrupts it.
struct AsioConnection::Lookup {
    std::mutex mutex;
    bool isDone = false;
    std::error_code error;
    Endpoints endpoints;
};

AsioConnection::AsioConnection(asio::io_context& context, QString host, std::uint16_t port)
    : strand_(context.get_executor())
    , socket_(strand_)
    , receiveTimer_(strand_)
    , timer_(strand_)
    , host_(std::move(host))
    , port_(port)
{
}

AsioConnection::AsioConnection(Strand strand, asio::ip::tcp::socket socket)
    : strand_(std::move(strand))
    , socket_(std::move(socket))
    , receiveTimer_(strand_)
    , timer_(strand_)
{
    keepFromOtherPrograms(socket_);
    std::error_code ignored;
    socket_.non_blocking(true, ignored);
}

void AsioConnection::start(StateHandler handler)
{
    asio::post(strand_, [self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->stateHandler_ = std::move(handler);
        if (self->cancelled_) {
            self->reach(State::cancelled, {});
            return;
        }
        self->resolve();
    });
}

void AsioConnection::resolve()
{
    using asio::ip::tcp;
    const std::string host = host_.toStdString();
    const std::string service = std::to_string(port_);
    std::error_code notNumeric;
    const Endpoints endpoints = tcp::resolver(strand_).resolve(
        host, service, tcp::resolver::numeric_host | tcp::resolver::numeric_service, notNumeric);
    if (!notNumeric) {
        resolved({}, endpoints);
        return;
    }
    try {
        lookUp(host, service);
    } catch (const std::system_error& noThread) {
        reach(State::failed, noThread.code());
    }
}

void AsioConnection::lookUp(const std::string& host, const std::string& service)
{
    const auto lookup = std::make_shared<Lookup>();
    std::thread([lookup, host, service] {
        setCurrentThreadName("ferrylane.lookup");
        std::error_code error;
        asio::io_context own;
        Endpoints endpoints = asio::ip::tcp::resolver(own).resolve(host, service, error);
        const std::lock_guard lock(lookup->mutex);
        lookup->isDone = true;
        lookup->error = error;
        lookup->endpoints = std::move(endpoints);
    }).detach();
    awaitLookup(lookup);
}

void AsioConnection::awaitLookup(const std::shared_ptr<Lookup>& lookup)
{
    std::unique_lock lock(lookup->mutex);
    if (lookup->isDone) {
        lock.unlock();
        resolved(lookup->error, lookup->endpoints);
        return;
    }
    // Asked, so that the thread needs to know nothing that may be gone before it ends.
    timer_.expires_after(lookupPause);
    timer_.async_wait([self = shared_from_this(), lookup](const std::error_code& error) {
        if (!error && !self->cancelled_) self->awaitLookup(lookup);
    });
}

void AsioConnection::resolved(const std::error_code& error, const Endpoints& endpoints)
{
    if (cancelled_) return;
    if (error) {
        reach(State::failed, error);
        return;
    }
    asio::async_connect(socket_, endpoints,
        [self = shared_from_this()](const std::error_code& connectError,
            const asio::ip::tcp::endpoint&) { self->connected(connectError); });
}

void AsioConnection::connected(const std::error_code& error)
{
    if (cancelled_) return;
    if (error) {
        reach(State::failed, error);
        return;
    }
    keepFromOtherPrograms(socket_);
    sendWithoutDelay(socket_);
    failWhenUnanswered(socket_);
    std::error_code ignored;
    socket_.non_blocking(true, ignored);
    reach(State::ready, {});
}

void AsioConnection::reach(State state, const std::error_code& error)
{
    // Final states let go of the handler and with it of whatever it holds, this connection
    // included.
    const StateHandler handler
        = state == State::ready ? stateHandler_ : std::exchange(stateHandler_, nullptr);
    if (handler) handler(state, systemError(error));
}

void AsioConnection::receive(ByteBuffer& buffer, std::size_t minimum, std::size_t maximum,
    std::optional<Duration> limit, ReceiveHandler handler)
{
    auto receive
        = std::make_shared<Receive>(Receive{buffer, minimum, maximum, limit, std::move(handler)});
    // Posted even on the strand: a peer that always has bytes ready must not deepen the stack.
    asio::post(strand_,
        [self = shared_from_this(), receive = std::move(receive)] { self->receiveSome(receive); });
}

void AsioConnection::receiveSome(const std::shared_ptr<Receive>& receive)
{
    std::error_code error;
    // Asked for first, so that the buffer grows by what is there and not by what might come.
    const std::size_t available = socket_.available(error);
    const std::size_t room
        = std::min(receive->maximum - receive->count, std::max<std::size_t>(available, 1));
    std::size_t count = 0;
    if (!error) {
        const MutableByteView space = receive->buffer.prepare(room);
        count = socket_.read_some(asio::buffer(space.data(), space.size()), error);
        receive->buffer.commit(count);
        receive->count += count;
    }
    const bool again = error == asio::error::would_block || error == asio::error::interrupted;
    if (again || (!error && receive->count < receive->minimum)) {
        waitForBytes(receive);
    } else if (error == asio::error::eof) {
        receive->handler(true, {});
    } else {
        receive->handler(false, systemError(cancelled_ ? asio::error::operation_aborted : error));
    }
}

void AsioConnection::waitForBytes(const std::shared_ptr<Receive>& receive)
{
    if (receive->limit) startTimeLimit(receive);
    socket_.async_wait(asio::ip::tcp::socket::wait_read,
        [self = shared_from_this(), receive](const std::error_code& error) {
            // The timer's handler may be waiting already: it finds its time moved.
            self->receiveTimer_.expires_at(asio::steady_timer::time_point::max());
            if (!error) {
                self->receiveSome(receive);
            } else if (receive->isTimedOut) {
                receive->handler(false, std::make_error_code(std::errc::timed_out));
            } else {
                receive->handler(false, systemError(error));
            }
        });
}

void AsioConnection::startTimeLimit(const std::shared_ptr<Receive>& receive)
{
    receiveTimer_.expires_after(std::max(*receive->limit, Duration::zero()));
    receiveTimer_.async_wait([self = shared_from_this(), receive](const std::error_code& error) {
        if (error || self->receiveTimer_.expiry() > std::chrono::steady_clock::now()) return;
        receive->isTimedOut = true;
        std::error_code ignored;
        self->socket_.cancel(ignored);
    });
}

void AsioConnection::send(QByteArray message, SendHandler handler)
{
    auto kept = std::make_shared<QByteArray>(std::move(message));
    const ByteView view = bytesOf(*kept);
    sendView(
        view, [kept = std::move(kept), handler = std::move(handler)](const std::error_code& e) {
            handler(e);
        });
}

void AsioConnection::sendView(ByteView message, SendHandler handler)
{
    // Posted even on the strand, as receiving is.
    asio::post(
        strand_, [self = shared_from_this(), message, handler = std::move(handler)]() mutable {
            self->sendSome(message, std::move(handler));
        });
}

void AsioConnection::sendSome(ByteView rest, SendHandler handler)
{
    std::error_code error;
    // The system is given all that is left at a time. asio::async_write() would hand it over in
    // pieces of 64 KiB and go through its queue between them.
    while (!rest.empty() && !error) {
        rest = rest.subspan(socket_.write_some(asio::buffer(rest.data(), rest.size()), error));
        if (error == asio::error::interrupted) error.clear();
    }
    if (error != asio::error::would_block) {
        handler(systemError(cancelled_ ? asio::error::operation_aborted : error));
        return;
    }
    socket_.async_wait(asio::ip::tcp::socket::wait_write,
        [self = shared_from_this(), rest, handler = std::move(handler)](
            const std::error_code& waitError) mutable {
            if (waitError) {
                handler(systemError(waitError));
            } else {
                self->sendSome(rest, std::move(handler));
            }
        });
}

void AsioConnection::sendLast(QByteArray message, std::shared_ptr<void> keptUntilClosed)
{
    send(std::move(message),
        [self = shared_from_this(), kept = std::move(keptUntilClosed)](
            const std::error_code& error) mutable {
            self->keptUntilClosed_ = std::move(kept);
            if (error) {
                self->close();
            } else {
                self->closeGently();
            }
        });
}

void AsioConnection::closeGently()
{
    std::error_code ignored;
    socket_.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
    timer_.expires_after(closingTime);
    timer_.async_wait([self = shared_from_this()](const std::error_code& error) {
        if (!error) self->close();
    });
    discardIncoming();
}

void AsioConnection::discardIncoming()
{
    std::array<std::byte, 16384> scratch; // NOLINT(*-member-init): written before it is read
    std::error_code error;
    // One read at a time: the strand's thread has others to serve.
    socket_.read_some(asio::buffer(scratch), error);
    if (error && error != asio::error::would_block) {
        close();
        return;
    }
    socket_.async_wait(asio::ip::tcp::socket::wait_read,
        [self = shared_from_this()](const std::error_code& waitError) {
            if (!waitError) self->discardIncoming();
        });
}

void AsioConnection::close()
{
    const auto keptUntilNow = std::exchange(keptUntilClosed_, nullptr);
    if (std::exchange(cancelled_, true)) return;
    std::error_code ignored;
    receiveTimer_.cancel();
    timer_.cancel();
    socket_.close(ignored);
    reach(State::cancelled, {});
}

void AsioConnection::cancel()
{
    // Posted even on the strand: whoever cancels may hold a lock that the end of this needs.
    asio::post(strand_, [self = shared_from_this()] { self->close(); });
}

void AsioConnection::async(SerialQueue::Task task)
{
    asio::post(strand_, std::move(task));
}

} // namespace platform
