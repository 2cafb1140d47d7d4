#pragma once

#include "platform/TcpStream.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>

namespace platform {

/// An accepted TCP connection. Its handlers run on the connection's own serial queue, one at a
/// time; every operation but leaveQueue() may be called from any thread. At most one receive is
/// outstanding.
///
/// The connection lives while somebody holds it or one of its operations is outstanding.
class TcpConnection : public std::enable_shared_from_this<TcpConnection> {
public:
    /// `endOfStream`: the peer will send no more.
    using ReceiveHandler = std::function<void(bool endOfStream, std::error_code)>;
    struct Socket; ///< the system's side

    explicit TcpConnection(std::unique_ptr<Socket> socket);
    ~TcpConnection();
    TcpConnection(const TcpConnection&) = delete;
    TcpConnection& operator=(const TcpConnection&) = delete;

    /// Waits, however long, until bytes have come, the peer has closed its side or the connection
    /// has failed, appends what came (at most `maximum` bytes) to `buffer` and calls the handler.
    /// The buffer is touched on the connection's queue only, must live until the handler has run,
    /// and takes memory only once bytes are there to be read.
    void receive(ByteBuffer& buffer, std::size_t maximum, ReceiveHandler handler);

    /// Hands the connection to a thread that waits, until sendLast(). Called by a handler, with
    /// nothing outstanding. The stream lives as long as the connection, and cancel() cancels it.
    /// Throws std::system_error.
    [[nodiscard]] TcpStream& leaveQueue();

    /// Sends the last message of the conversation, then closes: first this side, then, once the
    /// peer has closed too or a second has passed, the whole connection. What the peer still sends
    /// meanwhile is thrown away. Closing at once would make the kernel reset the connection when
    /// unread bytes are there, and the peer would lose the message. `keptUntilClosed` is let go of
    /// when the connection has been closed, on its queue.
    void sendLast(QByteArray message, std::shared_ptr<void> keptUntilClosed = nullptr);

    /// Closes at once. An outstanding receive ends with an error, on the connection's queue.
    void cancel();

private:
    void receiveSome(ByteBuffer& buffer, std::size_t maximum, ReceiveHandler handler);
    void takeSocketBack();
    void closeGently();
    void discardIncoming();
    void close();

    // On the queue.
    std::unique_ptr<Socket> socket_;
    std::optional<TcpStream> stream_; ///< has the socket meanwhile
    QByteArray lastMessage_;
    std::shared_ptr<void> keptUntilClosed_;
    bool isClosed_ = false;
};

/// Accepts TCP connections on one port, on every interface, over IPv6 and IPv4 (IPv4 alone where
/// there is no IPv6).
class TcpListener {
public:
    enum class State {
        waiting, ///< accepting is paused (out of descriptors or memory) and goes on by itself,
                 ///< without a word; told once a minute at most
        ready,   ///< connections are accepted
        failed   ///< the port could not be opened; final
    };
    using StateHandler = std::function<void(State, std::error_code)>;
    using ConnectionHandler = std::function<void(std::shared_ptr<TcpConnection>)>;
    class Acceptor;

    explicit TcpListener(std::shared_ptr<Acceptor> acceptor) : acceptor_(std::move(acceptor)) {}
    /// Final like cancel().
    ~TcpListener() { cancel(); }
    TcpListener(const TcpListener&) = delete;
    TcpListener& operator=(const TcpListener&) = delete;

    /// Opens the port. Both handlers run on the listener's queue, the state's first.
    void start(StateHandler onState, ConnectionHandler onConnection);

    /// Closes the port and waits for a handler that is running: when this returns, the port is free
    /// and no handler runs or will run. Not to be called from one of the listener's own handlers.
    void cancel();

private:
    // Shared with the operations under way, which find it closed when they end.
    std::shared_ptr<Acceptor> acceptor_;
};

/// Makes TCP listeners, and owns the few threads that serve all of their connections.
class TcpNetwork {
public:
    /// Starts the threads. `label` names them. Throws std::system_error when there are none to be
    /// had.
    explicit TcpNetwork(const std::string& label);
    /// Drops what is outstanding without calling its handlers, and joins the threads. A handler
    /// that throws is dropped too, with a critical message to Qt's message handler.
    ~TcpNetwork();
    TcpNetwork(const TcpNetwork&) = delete;
    TcpNetwork& operator=(const TcpNetwork&) = delete;

    [[nodiscard]] std::unique_ptr<TcpListener> listener(std::uint16_t port);

private:
    struct Threads;
    std::unique_ptr<Threads> threads_;
};

} // namespace platform
