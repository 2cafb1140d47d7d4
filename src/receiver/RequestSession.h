#pragma once

#include "platform/ByteBuffer.h"
#include "protocol/RequestHeadParser.h"
#include "protocol/Routing.h"
#include "receiver/ReceiverContext.h"

#include <memory>

namespace ferrylane {

/// Most bytes asked of a connection at once while its head is received.
constexpr std::size_t maximumHeadReceive = 262144;

/// One accepted connection and its one request: reads the head, then answers or hands the
/// connection over to the upload receiver. Runs on the connection's queue; the pending receive
/// keeps it alive.
class RequestSession final : public std::enable_shared_from_this<RequestSession> {
public:
    static void begin(std::shared_ptr<ReceiverContext> context,
        std::shared_ptr<platform::TcpConnection> connection);

    RequestSession(std::shared_ptr<ReceiverContext> context,
        std::shared_ptr<platform::TcpConnection> connection);

private:
    void receiveHead();
    void received(bool endOfStream, const std::error_code& error);
    void handle(const RequestHead& head);

    /// The end of the session.
    void send(QByteArray answer);
    // One for each kind of route.
    void answer(const HttpAnswer& answer);
    void answer(const routes::Readiness&);
    void answer(const routes::Identify& request);
    void answer(const routes::Upload& request);

    std::shared_ptr<ReceiverContext> context_;
    std::shared_ptr<platform::TcpConnection> connection_;
    std::unique_ptr<OpenConnections::Registration> registration_;
    platform::ByteBuffer buffer_;
    RequestHeadParser parser_;
};

} // namespace ferrylane
