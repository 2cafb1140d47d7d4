#include "sender/PhoneConnection.h"

#include "core/Log.h"
#include "protocol/HttpAnswer.h"
#include "sender/SendError.h"

namespace ferrylane {

PhoneConnection::PhoneConnection(std::stop_token stop) : onStop_(std::move(stop), Cancel{stream_})
{
}

bool PhoneConnection::connect(
    const TargetAddress& address, platform::Duration limit, const QString& where)
{
    const std::error_code error = stream_.connect(address.host, address.port, limit);
    if (error == std::errc::timed_out) return false;
    const bool isTold = !where.isEmpty() && error != std::errc::operation_canceled;
    if (error) {
        if (isTold) {
            flLog(QStringLiteral("Mac sender connection failed"), error);
        }
        throw SendError::network(error);
    }
    if (isTold) flLog(QStringLiteral("Mac sender connected to ") + where);
    return true;
}

bool PhoneConnection::send(platform::ByteView bytes)
{
    if (end_) return false;
    const auto [isEnd, error] = stream_.send(bytes, answer_, maximumPhoneResponse);
    if (isEnd) end_.emplace();
    if (!error) return !isEnd;
    // A peer that answers early and closes makes sends fail; its answer is worth more than that.
    if (!answer(platform::Duration::zero()).bytes.isEmpty()) return false;
    throw SendError::network(error);
}

PhoneConnection::Answer PhoneConnection::answer(platform::Duration limit)
{
    const platform::SteadyClock clock;
    const platform::TimePoint deadline = clock.now() + limit;
    while (!end_ && answer_.size() < maximumPhoneResponse) {
        const auto [isEnd, error] = stream_.receive(
            answer_, 1, maximumPhoneResponse - answer_.size(), deadline - clock.now());
        if (isEnd || error) end_ = error;
    }
    return {platform::toByteArray(answer_.unread()), end_.value_or(std::error_code())};
}

} // namespace ferrylane
