#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Interface.h"
#include "platform/SerialQueue.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <system_error>

namespace platform {

/// One TCP connection. Its handlers run on the connection's own serial queue, one at a time; every
/// operation may be called from any thread. At most one receive and one send are outstanding.
///
/// The connection lives while somebody holds it or one of its operations is outstanding.
class TcpConnection : public Interface {
public:
    enum class State {
        waiting,  ///< not connected yet
        ready,    ///< bytes can be sent and received
        failed,   ///< could not be connected; final
        cancelled ///< cancel() was called; final
    };
    using StateHandler = std::function<void(State, std::error_code)>;
    /// `endOfStream`: the peer will send no more.
    using ReceiveHandler = std::function<void(bool endOfStream, std::error_code)>;
    using SendHandler = std::function<void(std::error_code)>;

    /// Connects a connection made by TcpNetwork::connection(); an accepted one is ready already and
    /// is not started.
    virtual void start(StateHandler handler) = 0;

    /// Waits until at least `minimum` bytes have come, the peer has closed its side or the
    /// connection has failed, appends what came (at most `maximum` bytes) to `buffer` and calls the
    /// handler. The buffer is touched on the connection's queue only, must live until the handler
    /// has run, and takes memory only once bytes are there to be read. Where there is a `limit`, a
    /// peer that sends nothing for so long ends the wait with std::errc::timed_out.
    virtual void receive(ByteBuffer& buffer, std::size_t minimum, std::size_t maximum,
        std::optional<Duration> limit, ReceiveHandler handler)
        = 0;

    /// Sends all of `message` and calls the handler when the system has taken it, or with an error.
    virtual void send(QByteArray message, SendHandler handler) = 0;
    /// The same without a copy: `message` must stay until the handler has run.
    virtual void sendView(ByteView message, SendHandler handler) = 0;

    /// Sends the last message of the conversation, then closes: first this side, then, once the
    /// peer has closed too or a second has passed, the whole connection. What the peer still sends
    /// meanwhile is thrown away. Closing at once would make the kernel reset the connection when
    /// unread bytes are there, and the peer would lose the message. `keptUntilClosed` is let go of
    /// when the connection has been closed, on its queue.
    virtual void sendLast(QByteArray message, std::shared_ptr<void> keptUntilClosed = nullptr) = 0;

    /// Closes at once. An outstanding receive or send ends with an error, on the connection's
    /// queue.
    virtual void cancel() = 0;

    /// Runs `task` on the connection's queue.
    virtual void async(SerialQueue::Task task) = 0;
};

/// Accepts TCP connections on one port, on every interface, over IPv6 and IPv4 (IPv4 alone where
/// there is no IPv6).
class TcpListener : public Interface {
public:
    enum class State {
        waiting, ///< accepting is paused (out of descriptors or memory) and goes on by itself,
                 ///< without a word; told once a minute at most
        ready,   ///< connections are accepted
        failed   ///< the port could not be opened; final
    };
    using StateHandler = std::function<void(State, std::error_code)>;
    using ConnectionHandler = std::function<void(std::shared_ptr<TcpConnection>)>;

    /// Final like cancel().
    ~TcpListener() override = default;

    /// Opens the port. Both handlers run on the listener's queue, the state's first.
    virtual void start(StateHandler onState, ConnectionHandler onConnection) = 0;

    /// Closes the port and waits for a handler that is running: when this returns, the port is free
    /// and no handler runs or will run. Not to be called from one of the listener's own handlers.
    virtual void cancel() = 0;
};

/// Makes TCP listeners and connections, and owns the few threads that serve all of them.
class TcpNetwork : public Interface {
public:
    /// Starts the threads. `label` names them. Throws std::system_error when there are none to be
    /// had.
    [[nodiscard]] static std::unique_ptr<TcpNetwork> create(const std::string& label);

    /// Drops what is outstanding without calling its handlers, and joins the threads. A handler
    /// that throws is dropped too, with a critical message to Qt's message handler.
    ~TcpNetwork() override = default;

    [[nodiscard]] virtual std::unique_ptr<TcpListener> listener(std::uint16_t port) = 0;
    /// A connection to `host` (a name or a numeric address) that is connected by its start().
    [[nodiscard]] virtual std::shared_ptr<TcpConnection> connection(
        const QString& host, std::uint16_t port)
        = 0;
};

} // namespace platform
