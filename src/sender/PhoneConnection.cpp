#include "sender/PhoneConnection.h"

#include "core/Log.h"
#include "protocol/PhoneResponse.h"
#include "sender/SendError.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace ferrylane {

namespace {

constexpr std::size_t answerReceive = 16384;
// How long an answer that came before a failed send may take to be read.
constexpr auto earlyAnswerTime = std::chrono::seconds(1);

using TcpState = platform::TcpConnection::State;

QString describe(const std::error_code& error)
{
    return QString::fromStdString(error.message());
}

void logState(TcpState state, const std::error_code& error, const QString& where)
{
    if (where.isEmpty()) return;
    switch (state) {
    case TcpState::waiting:
        flLog(QStringLiteral("Mac sender waiting: ") + describe(error));
        return;
    case TcpState::failed:
        flLog(QStringLiteral("Mac sender connection failed: ") + describe(error));
        return;
    case TcpState::ready:
        flLog(QStringLiteral("Mac sender connected to ") + where);
        return;
    case TcpState::cancelled:
        return;
    }
}

} // namespace

struct PhoneConnection::Exchange : std::enable_shared_from_this<Exchange> {
    explicit Exchange(std::shared_ptr<platform::TcpConnection> tcp) : connection(std::move(tcp)) {}

    void start(const QString& where);
    void reached(TcpState reachedState, const std::error_code& why);
    void receiveMore();
    void received(bool endOfStream, const std::error_code& why);
    std::error_code sendAndWait(platform::ByteView bytes);

    const std::shared_ptr<platform::TcpConnection> connection;
    platform::ByteBuffer buffer; ///< on the connection's queue until `ended`

    std::mutex mutex;
    std::condition_variable changed;
    std::optional<TcpState> state;       ///< how connecting ended
    std::optional<std::error_code> sent; ///< how the latest send ended
    bool ended = false;                  ///< nothing more will be received
    std::error_code error;               ///< of connecting, then of receiving
};

void PhoneConnection::Exchange::start(const QString& where)
{
    // Weak, because the connection keeps this handler for as long as it is open.
    connection->start([weak = weak_from_this(), where](TcpState now, const std::error_code& why) {
        const auto self = weak.lock();
        if (!self) return;
        logState(now, why, where);
        if (now != TcpState::waiting) self->reached(now, why);
    });
}

void PhoneConnection::Exchange::reached(TcpState reachedState, const std::error_code& why)
{
    const std::lock_guard lock(mutex);
    // A connection that is cancelled later was connected all the same.
    if (state) return;
    state = reachedState;
    error = why;
    changed.notify_all();
}

void PhoneConnection::Exchange::receiveMore()
{
    connection->receive(buffer, 1, answerReceive, std::nullopt,
        [self = shared_from_this()](
            bool endOfStream, const std::error_code& why) { self->received(endOfStream, why); });
}

void PhoneConnection::Exchange::received(bool endOfStream, const std::error_code& why)
{
    if (!endOfStream && !why && buffer.size() < maximumPhoneResponse) {
        receiveMore();
        return;
    }
    const std::lock_guard lock(mutex);
    ended = true;
    error = why;
    changed.notify_all();
}

std::error_code PhoneConnection::Exchange::sendAndWait(platform::ByteView bytes)
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

PhoneConnection::PhoneConnection(std::shared_ptr<platform::TcpConnection> connection)
    : exchange_(std::make_shared<Exchange>(std::move(connection)))
{
}

PhoneConnection::~PhoneConnection()
{
    exchange_->connection->cancel();
}

bool PhoneConnection::connect(platform::Duration limit, const QString& where)
{
    exchange_->start(where);
    std::unique_lock lock(exchange_->mutex);
    const auto isDecided = [this] { return exchange_->state.has_value(); };
    if (!exchange_->changed.wait_for(lock, limit, isDecided)) return false;
    if (*exchange_->state == TcpState::failed) throw SendError::network(exchange_->error);
    if (*exchange_->state == TcpState::cancelled) {
        throw SendError::network(std::make_error_code(std::errc::operation_canceled));
    }
    lock.unlock();
    exchange_->receiveMore();
    return true;
}

bool PhoneConnection::send(platform::ByteView bytes)
{
    {
        const std::lock_guard lock(exchange_->mutex);
        if (exchange_->ended) return false;
    }
    const std::error_code error = exchange_->sendAndWait(bytes);
    if (!error) return true;

    // A peer that answers early and closes makes sends fail; its answer is worth more than that.
    std::unique_lock lock(exchange_->mutex);
    exchange_->changed.wait_for(lock, earlyAnswerTime, [this] { return exchange_->ended; });
    if (exchange_->ended && !exchange_->buffer.empty()) return false;
    // The system tells why a connection ended once, of sending and receiving to the first that
    // asks.
    throw SendError::network(exchange_->ended && exchange_->error ? exchange_->error : error);
}

PhoneConnection::Answer PhoneConnection::answer(platform::Duration limit)
{
    std::unique_lock lock(exchange_->mutex);
    const auto hasEnded = [this] { return exchange_->ended; };
    const bool isInTime = exchange_->changed.wait_for(lock, limit, hasEnded);
    if (!isInTime) {
        // The buffer may be read only when nothing is received into it any more.
        exchange_->connection->cancel();
        exchange_->changed.wait(lock, hasEnded);
    }
    return {platform::toByteArray(exchange_->buffer.unread()),
        isInTime ? exchange_->error : std::make_error_code(std::errc::timed_out)};
}

} // namespace ferrylane
