#include "receiver/RequestSession.h"

#include "core/DeviceName.h"
#include "protocol/IdentifyHandshake.h"
#include "protocol/RequestHeadParser.h"
#include "protocol/Routing.h"
#include "receiver/V4Receiver.h"

namespace ferrylane {

namespace {

// Most bytes asked of a connection at once.
constexpr std::size_t maximumHeadReceive = 262144;

/// The pending receive keeps it alive.
class RequestSession : public std::enable_shared_from_this<RequestSession> {
public:
    RequestSession(std::shared_ptr<ReceiverContext> context,
        std::shared_ptr<platform::TcpConnection> connection)
        : context_(std::move(context))
        , connection_(std::move(connection))
        , registration_(context_->connections->add(connection_))
    {
    }

    void receiveHead()
    {
        // There is no time limit: who waits too long makes room for others (OpenConnections).
        connection_->receive(buffer_, maximumHeadReceive,
            [self = shared_from_this()](bool endOfStream, const std::error_code& error) {
                self->received(endOfStream, error);
            });
    }

private:
    void received(bool endOfStream, const std::error_code& error)
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
        std::visit([this](const auto& request) { answer(request); }, route(complete.head));
    }

    /// The end of the session.
    void send(QByteArray answer)
    {
        registration_->closing();
        connection_->sendLast(std::move(answer), std::move(registration_));
    }

    // One for each kind of route.

    void answer(const HttpAnswer& answer) { send(answer.toBytes()); }

    void answer(const routes::Readiness& /*request*/)
    {
        answer(context_->admission.isBusy() ? busy() : HttpAnswer{statuses::ok, "READY"});
    }

    void answer(const routes::Identify& request)
    {
        auto response
            = identifyResponse(context_->sessionKey, request.challenge, ferrylaneDeviceSuffix());
        if (response) {
            send(std::move(*response));
        } else {
            answer(HttpAnswer{statuses::badRequest, "Invalid challenge"});
        }
    }

    void answer(const routes::Upload& request)
    {
        if (context_->admission.isBusy()) {
            answer(busy());
        } else if (!request.transfer) {
            answer(HttpAnswer{statuses::badRequest, "Authentication metadata missing"});
        } else if (auto place = context_->admission.tryAdmit(connection_)) {
            registration_->uploading();
            receiveSecureUploadV4Chunked(
                {*context_, connection_, std::move(registration_), std::move(place),
                    *request.transfer, request.senderName},
                std::move(buffer_));
        } else {
            answer(busy());
        }
    }

    [[nodiscard]] static HttpAnswer busy() { return {statuses::conflict, "BUSY"}; }

    std::shared_ptr<ReceiverContext> context_;
    std::shared_ptr<platform::TcpConnection> connection_;
    std::unique_ptr<OpenConnections::Registration> registration_;
    platform::ByteBuffer buffer_;
    RequestHeadParser parser_;
};

} // namespace

void serveRequest(
    std::shared_ptr<ReceiverContext> context, std::shared_ptr<platform::TcpConnection> connection)
{
    std::make_shared<RequestSession>(std::move(context), std::move(connection))->receiveHead();
}

} // namespace ferrylane
