#include "phone/HttpExchange.h"

#include "phone/Failure.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace ferrylane::phone {

namespace {

constexpr auto connectTime = std::chrono::seconds(15);

Failure noConnection(const QString& what, const std::error_code& error)
{
    return {ExitCode::noConnection, what + QString::fromStdString(error.message())};
}

} // namespace

struct HttpExchange::State : std::enable_shared_from_this<State> {
    using TcpState = platform::TcpConnection::State;

    explicit State(std::shared_ptr<platform::TcpConnection> tcp) : connection(std::move(tcp)) {}

    void connect(const QString& where);
    void receiveMore();
    void received(bool endOfStream, const std::error_code& why);
    void end(ParsedResponse result, const std::error_code& why);
    std::error_code sendAndWait(platform::ByteView bytes);

    const std::shared_ptr<platform::TcpConnection> connection;
    platform::ByteBuffer buffer; ///< on the connection's queue

    std::mutex mutex;
    std::condition_variable changed;
    std::optional<std::error_code> connected; ///< how connecting ended
    std::optional<std::error_code> sent;      ///< how the latest send ended
    bool ended = false;                       ///< nothing more will be received
    ParsedResponse response;
    std::error_code error;
};

void HttpExchange::State::connect(const QString& where)
{
    // Weak, because the connection keeps this handler for as long as it is open.
    connection->start([weak = weak_from_this()](TcpState state, const std::error_code& why) {
        const auto self = weak.lock();
        if (!self || state == TcpState::waiting) return;
        const std::lock_guard lock(self->mutex);
        self->connected = why;
        self->changed.notify_all();
    });
    std::unique_lock lock(mutex);
    if (!changed.wait_for(lock, connectTime, [this] { return connected.has_value(); })) {
        connected = std::make_error_code(std::errc::timed_out);
    }
    if (*connected) throw noConnection(QStringLiteral("cannot reach %1: ").arg(where), *connected);
}

void HttpExchange::State::receiveMore()
{
    connection->receive(buffer, 1, maximumResponseBytes,
        [self = shared_from_this()](
            bool endOfStream, const std::error_code& why) { self->received(endOfStream, why); });
}

void HttpExchange::State::received(bool endOfStream, const std::error_code& why)
{
    ParsedResponse parsed = parseHttpResponse(buffer.unread());
    if (!std::holds_alternative<NeedMore>(parsed) || endOfStream || why) {
        end(std::move(parsed), why);
    } else {
        receiveMore();
    }
}

void HttpExchange::State::end(ParsedResponse result, const std::error_code& why)
{
    const std::lock_guard lock(mutex);
    ended = true;
    response = std::move(result);
    error = why;
    changed.notify_all();
}

std::error_code HttpExchange::State::sendAndWait(platform::ByteView bytes)
{
    connection->sendView(bytes, [self = shared_from_this()](const std::error_code& why) {
        const std::lock_guard lock(self->mutex);
        self->sent = why;
        self->changed.notify_all();
    });
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return sent.has_value(); });
    return *std::exchange(sent, std::nullopt);
}

HttpExchange::HttpExchange(platform::TcpNetwork& network, const PairingLink& link)
    : state_(std::make_shared<State>(network.connection(link.host, link.port)))
{
    try {
        state_->connect(QStringLiteral("%1:%2").arg(link.hostInHeader()).arg(link.port));
    } catch (...) {
        state_->connection->cancel();
        throw;
    }
    state_->receiveMore();
}

HttpExchange::~HttpExchange()
{
    state_->connection->cancel();
}

bool HttpExchange::send(platform::ByteView bytes)
{
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->ended) return false;
    }
    return !state_->sendAndWait(bytes);
}

HttpResponse HttpExchange::answer()
{
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->ended; });
    if (auto* const response = std::get_if<HttpResponse>(&state_->response)) return *response;
    if (std::holds_alternative<Malformed>(state_->response)) {
        throw Failure(ExitCode::noConnection, QStringLiteral("the answer is not one of Ferrylane"));
    }
    if (state_->error) throw noConnection(QStringLiteral("connection lost: "), state_->error);
    throw Failure(
        ExitCode::noConnection, QStringLiteral("the computer closed the connection unasked"));
}

HttpResponse get(platform::TcpNetwork& network, const PairingLink& link, const QByteArray& target,
    const QByteArray& headers)
{
    const QByteArray host = link.hostInHeader().toUtf8() + ':' + QByteArray::number(link.port);
    const QByteArray request = "GET " + target + " HTTP/1.1\r\nHost: " + host
        + "\r\nConnection: close\r\n" + headers + "\r\n";
    HttpExchange exchange(network, link);
    (void)exchange.send(platform::bytesOf(request));
    return exchange.answer();
}

} // namespace ferrylane::phone
