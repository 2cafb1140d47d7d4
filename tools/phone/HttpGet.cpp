#include "phone/HttpGet.h"

#include "phone/Failure.h"
#include "sender/PhoneConnection.h"
#include "sender/SendError.h"

#include <chrono>

namespace ferrylane::phone {

namespace {

constexpr auto connectTime = std::chrono::seconds(15);
constexpr auto answerTime = std::chrono::seconds(30);

Failure noConnection(const QString& what)
{
    return {ExitCode::noConnection, what};
}

QByteArray exchange(platform::TcpNetwork& network, const PairingLink& link, const QString& where,
    const QByteArray& request)
{
    PhoneConnection connection(network.connection(link.address.host, link.address.port));
    if (!connection.connect(connectTime, where)) {
        throw SendError::network(std::make_error_code(std::errc::timed_out));
    }
    static_cast<void>(connection.send(platform::bytesOf(request)));
    const auto answer = connection.answer(answerTime);
    if (answer.bytes.isEmpty() && answer.error) throw SendError::network(answer.error);
    return answer.bytes;
}

} // namespace

HttpResponse get(platform::TcpNetwork& network, const PairingLink& link, const QByteArray& target,
    const QByteArray& headers)
{
    const QString where
        = QStringLiteral("%1:%2").arg(link.address.hostInHeader()).arg(link.address.port);
    const QByteArray request = "GET " + target + " HTTP/1.1\r\nHost: " + where.toUtf8()
        + "\r\nConnection: close\r\n" + headers + "\r\n";
    try {
        const QByteArray answer = exchange(network, link, where, request);
        const ParsedResponse parsed = parseHttpResponse(platform::bytesOf(answer));
        if (const auto* const response = std::get_if<HttpResponse>(&parsed)) return *response;
    } catch (const SendError& error) {
        throw noConnection(QStringLiteral("cannot reach %1: %2").arg(where, error.description()));
    }
    throw noConnection(QStringLiteral("the answer is not one of Ferrylane"));
}

} // namespace ferrylane::phone
