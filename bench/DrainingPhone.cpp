#include "bench/DrainingPhone.h"

#include "bench/RequestReader.h"
#include "bench/SealedUpload.h"
#include "protocol/HttpAnswer.h"

namespace bench {

namespace {

QByteArray okay(const QByteArray& body)
{
    return ferrylane::HttpAnswer{ferrylane::statuses::ok, body}.toBytes();
}

void talk(int connection)
{
    RequestReader request(connection);
    if (request.requestLine().startsWith("GET /transfer-status ")) {
        sendAnswer(connection, okay(QByteArrayLiteral("READY")));
        return;
    }
    request.readBody([](platform::ByteView) {});
    sendAnswer(connection, okay(storedAnswer()));
}

} // namespace

DrainingPhone::DrainingPhone() : server_(talk) {}

QString DrainingPhone::baseURL() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(server_.port());
}

} // namespace bench
