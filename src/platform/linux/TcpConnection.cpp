#include "platform/linux/AsioError.h"
#include "platform/linux/TcpSocket.h"

#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>

#include <algorithm>
#include <array>
#include <chrono>

#include <unistd.h>

namespace platform {

using asio::ip::tcp;

namespace {

// How long the peer has to take the last message and close its side.
constexpr auto closingTime = std::chrono::seconds(1);

} // namespace

TcpConnection::TcpConnection(std::unique_ptr<Socket> socket) : socket_(std::move(socket))
{
    keepFromOtherPrograms(socket_->tcp);
    std::error_code ignored;
    socket_->tcp.non_blocking(true, ignored);
}

TcpConnection::~TcpConnection() = default;

void TcpConnection::receive(ByteBuffer& buffer, std::size_t maximum, ReceiveHandler handler)
{
    // Posted even on the strand: a peer that always has bytes ready must not deepen the stack.
    asio::post(socket_->strand,
        [self = shared_from_this(), &buffer, maximum, handler = std::move(handler)]() mutable {
            self->receiveSome(buffer, maximum, std::move(handler));
        });
}

void TcpConnection::receiveSome(ByteBuffer& buffer, std::size_t maximum, ReceiveHandler handler)
{
    std::error_code error;
    // Asked for first, so that the buffer grows by what is there and not by what might come.
    const std::size_t available = socket_->tcp.available(error);
    if (!error) {
        const MutableByteView space
            = buffer.prepare(std::clamp<std::size_t>(available, 1, maximum));
        buffer.commit(socket_->tcp.read_some(asio::buffer(space.data(), space.size()), error));
    }
    if (error == asio::error::would_block || error == asio::error::interrupted) {
        socket_->tcp.async_wait(tcp::socket::wait_read,
            [self = shared_from_this(), &buffer, maximum, handler = std::move(handler)](
                const std::error_code& /*told by the next reading*/) mutable {
                self->receiveSome(buffer, maximum, std::move(handler));
            });
    } else if (error == asio::error::eof) {
        handler(true, {});
    } else {
        handler(false, systemError(isClosed_ ? asio::error::operation_aborted : error));
    }
}

TcpStream& TcpConnection::leaveQueue()
{
    std::error_code error;
    socket_->protocol = socket_->tcp.local_endpoint(error).protocol();
    const int descriptor = socket_->tcp.release(error);
    stream_.emplace(error ? -1 : descriptor);
    if (isClosed_) stream_->cancel();
    return *stream_;
}

void TcpConnection::takeSocketBack()
{
    const int descriptor = stream_ ? stream_->release() : -1;
    if (descriptor < 0) return;
    std::error_code error;
    socket_->tcp.assign(socket_->protocol, descriptor, error);
    if (error) ::close(descriptor);
    socket_->tcp.non_blocking(true, error);
}

void TcpConnection::sendLast(QByteArray message, std::shared_ptr<void> keptUntilClosed)
{
    asio::post(socket_->strand,
        [self = shared_from_this(), message = std::move(message),
            kept = std::move(keptUntilClosed)]() mutable {
            self->takeSocketBack();
            self->keptUntilClosed_ = std::move(kept);
            self->lastMessage_ = std::move(message);
            const ByteView view = bytesOf(self->lastMessage_);
            asio::async_write(self->socket_->tcp, asio::buffer(view.data(), view.size()),
                [self](const std::error_code& error, std::size_t /*sent*/) {
                    if (error) {
                        self->close();
                    } else {
                        self->closeGently();
                    }
                });
        });
}

void TcpConnection::closeGently()
{
    std::error_code ignored;
    socket_->tcp.shutdown(tcp::socket::shutdown_send, ignored);
    socket_->closing.expires_after(closingTime);
    socket_->closing.async_wait([self = shared_from_this()](const std::error_code& error) {
        if (!error) self->close();
    });
    discardIncoming();
}

void TcpConnection::discardIncoming()
{
    std::array<std::byte, 16384> scratch; // NOLINT(*-member-init): written before it is read
    std::error_code error;
    // One read at a time: the strand's thread has others to serve.
    socket_->tcp.read_some(asio::buffer(scratch), error);
    if (error && error != asio::error::would_block) {
        close();
        return;
    }
    socket_->tcp.async_wait(
        tcp::socket::wait_read, [self = shared_from_this()](const std::error_code& waitError) {
            if (!waitError) self->discardIncoming();
        });
}

void TcpConnection::close()
{
    const auto keptUntilNow = std::exchange(keptUntilClosed_, nullptr);
    if (std::exchange(isClosed_, true)) return;
    std::error_code ignored;
    socket_->closing.cancel();
    socket_->tcp.close(ignored);
    if (stream_) stream_->cancel();
}

void TcpConnection::cancel()
{
    // Posted even on the strand: whoever cancels may hold a lock that the end of this needs.
    asio::post(socket_->strand, [self = shared_from_this()] { self->close(); });
}

} // namespace platform
