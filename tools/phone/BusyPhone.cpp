#include "phone/BusyPhone.h"

#include "protocol/HttpAnswer.h"

namespace ferrylane::phone {

namespace {

constexpr std::size_t headReceive = 4096;

} // namespace

BusyPhone::BusyPhone(platform::TcpNetwork& network, std::uint16_t tcpPort, int times)
    : timesLeft_(times), listener_(network.listener(tcpPort))
{
    listener_->start(
        [this](platform::TcpListener::State state, const std::error_code& error) {
            if (state != platform::TcpListener::State::failed) return;
            QMetaObject::invokeMethod(this, [this, error] { Q_EMIT failed(error); });
        },
        [this](const std::shared_ptr<platform::TcpConnection>& connection) { refuse(connection); });
}

void BusyPhone::refuse(const std::shared_ptr<platform::TcpConnection>& connection)
{
    if (timesLeft_ == 0) return;
    if (--timesLeft_ == 0) QMetaObject::invokeMethod(this, &BusyPhone::finish);
    // The request is waited for: an answer before it might be lost.
    const auto request = std::make_shared<platform::ByteBuffer>();
    connection->receive(
        *request, headReceive, [connection, request](bool /*end*/, const std::error_code&) {
            connection->sendLast(HttpAnswer{statuses::conflict, "BUSY"}.toBytes());
        });
}

void BusyPhone::finish()
{
    listener_->cancel();
    Q_EMIT done();
}

} // namespace ferrylane::phone
