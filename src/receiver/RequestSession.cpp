#include "receiver/RequestSession.h"

#include "core/DeviceName.h"
#include "protocol/IdentifyHandshake.h"
#include "receiver/V4Receiver.h"

namespace ferrylane {

namespace {

HttpAnswer busy()
{
    return {statuses::conflict, "BUSY"};
}

} // namespace

void RequestSession::begin(
    std::shared_ptr<ReceiverContext> context, std::shared_ptr<platform::TcpConnection> connection)
{
    std::make_shared<RequestSession>(std::move(context), std::move(connection))->receiveHead();
}

RequestSession::RequestSession(
    std::shared_ptr<ReceiverContext> context, std::shared_ptr<platform::TcpConnection> connection)
    : context_(std::move(context))
    , connection_(std::move(connection))
    , registration_(context_->connections->add(connection_))
{
}

void RequestSession::receiveHead()
{
    // There is no time limit: who waits too long makes room for others (OpenConnections).
    connection_->receive(buffer_, maximumHeadReceive,
        [self = shared_from_this()](bool endOfStream, const std::error_code& error) {
            self->received(endOfStream, error);
        });
}

void RequestSession::received(bool endOfStream, const std::error_code& error)
{
    if (error) {
        connection_->cancel();
        return;
    }
    const RequestHeadParser::Result result = parser_.parse(buffer_.unread());
    if (std::holds_alternative<RequestHeadParser::NeedMore>(result)) {
        if (endOfStream) {
            connection_->cancel();
        } else {
            receiveHead();
        }
        return;
    }

    registration_->headComplete();
    if (const auto* const refusal = std::get_if<HttpAnswer>(&result)) {
        answer(*refusal);
        return;
    }
    const auto& complete = std::get<RequestHeadParser::Complete>(result);
    buffer_.consume(complete.length);
    handle(complete.head);
}

void RequestSession::handle(const RequestHead& head)
{
    std::visit([this](const auto& request) { answer(request); }, route(head));
}

void RequestSession::send(QByteArray answer)
{
    registration_->closing();
    connection_->sendLast(std::move(answer), std::move(registration_));
}

void RequestSession::answer(const HttpAnswer& answer)
{
    send(answer.toBytes());
}

void RequestSession::answer(const routes::Readiness& /*request*/)
{
    answer(context_->admission.isBusy() ? busy() : HttpAnswer{statuses::ok, "READY"});
}

void RequestSession::answer(const routes::Identify& request)
{
    auto response
        = identifyResponse(context_->sessionKey, request.challenge, ferrylaneDeviceSuffix());
    if (response) {
        send(std::move(*response));
    } else {
        answer(HttpAnswer{statuses::badRequest, "Invalid challenge"});
    }
}

void RequestSession::answer(const routes::Upload& request)
{
    if (context_->admission.isBusy()) {
        answer(busy());
    } else if (!request.transfer) {
        answer(HttpAnswer{statuses::badRequest, "Authentication metadata missing"});
    } else if (auto place = context_->admission.tryAdmit(connection_)) {
        registration_->uploading();
        V4Receiver::receiveSecureUploadV4Chunked(
            {*context_, connection_, connection_->leaveQueue(), std::move(registration_),
                std::move(*place), *request.transfer, request.senderName},
            std::move(buffer_));
    } else {
        answer(busy());
    }
}

} // namespace ferrylane
