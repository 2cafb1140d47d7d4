#include "platform/Process.h"
#include "platform/ThreadName.h"
#include "platform/linux/AsioError.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/TcpSocket.h"

#include <asio/executor_work_guard.hpp>
#include <asio/ip/v6_only.hpp>
#include <asio/post.hpp>

#include <QtGlobal>

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace platform {

using asio::ip::tcp;

namespace {

// How long accepting rests when the system is out of descriptors or memory: short, for whoever
// waits to be accepted, and long enough to cost nothing.
constexpr auto acceptPause = std::chrono::milliseconds(10);

// How often a rest is told, at most.
constexpr auto restTellingInterval = std::chrono::minutes(1);

// Descriptors that connections leave to the rest of the program: a file that is being received
// needs some in the end.
constexpr int reservedDescriptors = 16;

/// Whether the next descriptor would be one of the reserved. `latest` is that of the latest
/// connection, `any` an open one.
bool isShortOfDescriptors(int latest, int any)
{
    const int firstReserved = static_cast<int>(descriptorLimit()) - reservedDescriptors;
    // The system always gives the lowest one, so trying is needed only near the end.
    if (latest < firstReserved - 1) return false;
    const FileDescriptor next(fcntl(any, F_DUPFD_CLOEXEC, 0));
    return !next.isOpen() || next.get() >= firstReserved;
}

/// Errors of one connection that went away before it was accepted (accept(2)); the port is fine.
bool concernsOneConnection(const std::error_code& error)
{
    return error == std::errc::connection_aborted || error == std::errc::protocol_error
        || error == std::errc::interrupted || error == std::errc::network_unreachable
        || error == std::errc::host_unreachable || error == std::errc::timed_out;
}

} // namespace

/// Its one mutex makes the handlers serial, and cancel() wait for the one that runs.
class TcpListener::Acceptor : public std::enable_shared_from_this<Acceptor> {
public:
    Acceptor(asio::io_context& context, std::uint16_t port)
        : context_(context), acceptor_(context), pause_(context), port_(port)
    {
    }

    void start(StateHandler onState, ConnectionHandler onConnection)
    {
        onState_ = std::move(onState);
        onConnection_ = std::move(onConnection);
        asio::post(context_, [self = shared_from_this()] {
            const std::lock_guard lock(self->mutex_);
            if (!self->cancelled_) self->open();
        });
    }

    void cancel()
    {
        const std::lock_guard lock(mutex_);
        if (cancelled_) return;
        cancelled_ = true;
        std::error_code ignored;
        acceptor_.close(ignored);
        // A pause that is under way ends by itself and finds this cancelled.
        onState_ = nullptr;
        onConnection_ = nullptr;
    }

private:
    void open()
    {
        std::error_code error = listenOn(tcp::endpoint(tcp::v6(), port_));
        // No IPv6 in this kernel, or switched off.
        if (error == std::errc::address_family_not_supported
            || error == std::errc::address_not_available) {
            error = listenOn(tcp::endpoint(tcp::v4(), port_));
        }
        if (error) {
            onState_(State::failed, error);
            return;
        }
        onState_(State::ready, {});
        acceptNext();
    }

    std::error_code listenOn(const tcp::endpoint& endpoint)
    {
        std::error_code error;
        acceptor_.close(error);
        acceptor_.open(endpoint.protocol(), error);
        if (error) return systemError(error);
        keepFromOtherPrograms(acceptor_);
        // Connections of an earlier listener that are still closing do not hold the port.
        acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
        if (!error && endpoint.protocol() == tcp::v6()) {
            acceptor_.set_option(asio::ip::v6_only(false), error);
        }
        // Connections inherit it. An improvement, no condition.
        std::error_code ignored;
        acceptor_.set_option(tcp::no_delay(true), ignored);
        if (!error) acceptor_.bind(endpoint, error);
        if (!error) acceptor_.listen(tcp::acceptor::max_listen_connections, error);
        if (error) acceptor_.close(ignored);
        return systemError(error);
    }

    void acceptNext()
    {
        if (isShortOfDescriptors(latestDescriptor_, acceptor_.native_handle())) {
            rest(std::make_error_code(std::errc::too_many_files_open));
            return;
        }
        Strand strand(context_.get_executor());
        acceptor_.async_accept(strand,
            [self = shared_from_this(), strand](const std::error_code& error, tcp::socket socket) {
                const std::lock_guard lock(self->mutex_);
                if (self->cancelled_) return;
                self->accepted(strand, systemError(error), std::move(socket));
            });
    }

    void accepted(const Strand& strand, const std::error_code& error, tcp::socket socket)
    {
        if (error && !concernsOneConnection(error)) {
            rest(error);
            return;
        }
        if (!error) latestDescriptor_ = socket.native_handle();
        // Before the handler, which may throw.
        acceptNext();
        if (error) return;
        onConnection_(std::make_shared<TcpConnection>(
            std::make_unique<TcpConnection::Socket>(strand, std::move(socket))));
    }

    /// Out of something that others may give back: trying again at once would spin.
    void rest(const std::error_code& error)
    {
        const TimePoint now = SteadyClock().now();
        if (!lastTold_ || now - *lastTold_ >= restTellingInterval) {
            lastTold_ = now;
            onState_(State::waiting, error);
        }
        pause_.expires_after(acceptPause);
        pause_.async_wait([self = shared_from_this()](const std::error_code& waitError) {
            const std::lock_guard lock(self->mutex_);
            if (!waitError && !self->cancelled_) self->acceptNext();
        });
    }

    std::mutex mutex_;
    asio::io_context& context_;
    tcp::acceptor acceptor_;
    asio::steady_timer pause_;
    std::uint16_t port_;
    StateHandler onState_;
    ConnectionHandler onConnection_;
    bool cancelled_ = false;
    std::optional<TimePoint> lastTold_; ///< of a rest
    int latestDescriptor_ = -1;
};

void TcpListener::start(StateHandler onState, ConnectionHandler onConnection)
{
    acceptor_->start(std::move(onState), std::move(onConnection));
}

void TcpListener::cancel()
{
    acceptor_->cancel();
}

struct TcpNetwork::Threads {
    ~Threads() { context.stop(); }

    void run()
    {
        while (true) {
            try {
                context.run();
                return;
            } catch (const std::exception& error) {
                // The handler is gone, and with it what it held; the others are served on.
                qCritical("A connection was dropped: %s", error.what());
            }
        }
    }

    asio::io_context context;
    asio::executor_work_guard<asio::io_context::executor_type> work{context.get_executor()};
    std::vector<std::jthread> threads;
};

TcpNetwork::TcpNetwork(const std::string& label) : threads_(std::make_unique<Threads>())
{
    // Two at least, so that one that is held up leaves one to the others.
    const unsigned count = std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
    for (unsigned i = 0; i < count; ++i) {
        threads_->threads.emplace_back([threads = threads_.get(), label] {
            setCurrentThreadName(label);
            threads->run();
        });
    }
}

TcpNetwork::~TcpNetwork() = default;

std::unique_ptr<TcpListener> TcpNetwork::listener(std::uint16_t port)
{
    return std::make_unique<TcpListener>(
        std::make_shared<TcpListener::Acceptor>(threads_->context, port));
}

} // namespace platform
