#pragma once

#include "platform/Tcp.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/strand.hpp>

#include <fcntl.h>

namespace platform {

/// Programs that this one starts do not inherit the socket, as they do by Asio's default.
template <typename Socket> void keepFromOtherPrograms(Socket& socket)
{
    static_cast<void>(fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC));
}

/// Sends small pieces at once. On a connection, or on the acceptor that connections inherit it
/// from.
template <typename Socket> void sendWithoutDelay(Socket& socket)
{
    std::error_code ignored; // An improvement, no condition.
    socket.set_option(asio::ip::tcp::no_delay(true), ignored);
}

/// TcpConnection over Asio. All state is touched on the strand only; an outstanding operation holds
/// the connection.
class AsioConnection final : public TcpConnection,
                             public std::enable_shared_from_this<AsioConnection> {
public:
    using Strand = asio::strand<asio::io_context::executor_type>;

    /// A connection that start() will connect.
    AsioConnection(asio::io_context& context, QString host, std::uint16_t port);
    /// An accepted connection. Its socket must have been made on `strand`, by an acceptor that
    /// sends without delay.
    AsioConnection(Strand strand, asio::ip::tcp::socket socket);

    void start(StateHandler handler) override;
    void receive(ByteBuffer& buffer, std::size_t minimum, std::size_t maximum,
        std::optional<Duration> limit, ReceiveHandler handler) override;
    void send(QByteArray message, SendHandler handler) override;
    void sendView(ByteView message, SendHandler handler) override;
    void sendLast(QByteArray message, std::shared_ptr<void> keptUntilClosed) override;
    void cancel() override;
    void async(SerialQueue::Task task) override;

private:
    /// A receive under way.
    struct Receive {
        ByteBuffer& buffer;
        std::size_t minimum;
        std::size_t maximum;
        std::optional<Duration> limit;
        ReceiveHandler handler;
        std::size_t count = 0;
        bool isTimedOut = false;
    };
    using Endpoints = asio::ip::tcp::resolver::results_type;
    struct Lookup;

    void resolve();
    void lookUp(const std::string& host, const std::string& service);
    void awaitLookup(const std::shared_ptr<Lookup>& lookup);
    void resolved(const std::error_code& error, const Endpoints& endpoints);
    void connected(const std::error_code& error);
    void reach(State state, const std::error_code& error);

    void receiveSome(const std::shared_ptr<Receive>& receive);
    void waitForBytes(const std::shared_ptr<Receive>& receive);
    void startTimeLimit(const std::shared_ptr<Receive>& receive);
    void sendSome(ByteView rest, SendHandler handler);
    void closeGently();
    void discardIncoming();
    void close();

    Strand strand_;
    asio::ip::tcp::socket socket_;
    asio::steady_timer receiveTimer_;
    asio::steady_timer timer_; ///< of looking up, then of closing
    QString host_;
    std::uint16_t port_ = 0;
    StateHandler stateHandler_;
    std::shared_ptr<void> keptUntilClosed_;
    bool cancelled_ = false;
};

} // namespace platform
