#include "phone/Identify.h"

#include "core/Encodings.h"
#include "phone/Failure.h"
#include "platform/Crypto.h"
#include "protocol/HttpAnswer.h"
#include "sender/PhoneConnection.h"
#include "sender/SendError.h"

#include <QByteArrayList>

#include <array>
#include <chrono>

namespace ferrylane::phone {

namespace {

constexpr auto connectTime = std::chrono::seconds(15);
constexpr auto answerTime = std::chrono::seconds(30);

/// The value of the first header of that name, in any case of letters.
std::optional<QByteArray> headerOf(const QByteArray& answer, QByteArrayView name)
{
    for (const QByteArray& line : answer.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.first(colon).compare(name, Qt::CaseInsensitive) == 0) {
            return line.sliced(colon + 1).trimmed();
        }
    }
    return std::nullopt;
}

bool isProof(const std::optional<QByteArray>& text, const platform::SecretKey& key,
    const QByteArray& message)
{
    const auto proof = base64URLDecode(QString::fromLatin1(text.value_or(QByteArray())));
    const auto expected = platform::hmacSha256(key, platform::bytesOf(message));
    return proof && platform::equalInConstantTime(platform::bytesOf(*proof), expected);
}

QString newChallenge()
{
    std::array<std::byte, 32> bytes{};
    if (!platform::fillWithRandomBytes(bytes)) {
        throw Failure(ExitCode::localFile, QStringLiteral("the system has no random bytes"));
    }
    return base64URLEncode(bytes);
}

QByteArray exchange(const PairingLink& link, const QString& where, const QByteArray& request)
{
    PhoneConnection connection;
    if (!connection.connect(link.address, connectTime, where)) {
        throw SendError::network(std::make_error_code(std::errc::timed_out));
    }
    static_cast<void>(connection.send(platform::bytesOf(request)));
    const auto answer = connection.answer(answerTime);
    if (answer.bytes.isEmpty() && answer.error) throw SendError::network(answer.error);
    return answer.bytes;
}

/// The whole answer, head and body.
QByteArray get(const PairingLink& link, const QString& challenge)
{
    const QString where
        = QStringLiteral("%1:%2").arg(link.address.hostInHeader()).arg(link.address.port);
    const QString request = QStringLiteral("GET /secure-identify HTTP/1.1\r\nHost: %1\r\n"
                                           "Connection: close\r\n"
                                           "X-Ferrylane-Challenge: %2\r\n\r\n");
    QByteArray answer;
    try {
        answer = exchange(link, where, request.arg(where, challenge).toUtf8());
    } catch (const SendError& error) {
        throw Failure(ExitCode::noConnection,
            QStringLiteral("cannot reach %1: %2").arg(where, error.description()));
    }
    if (!parsePhoneResponse(platform::bytesOf(answer)) || !answer.contains("\r\n\r\n")) {
        throw Failure(ExitCode::noConnection, QStringLiteral("the answer is not one of Ferrylane"));
    }
    return answer;
}

} // namespace

std::optional<QString> provenName(
    const platform::SecretKey& key, const QString& challenge, const QByteArray& answer)
{
    const auto response = parsePhoneResponse(platform::bytesOf(answer));
    const auto challengeBytes = base64URLDecode(challenge);
    const auto encodedName = headerOf(answer, "X-Ferrylane-Name");
    if (!response || response->status != 200 || !challengeBytes || !encodedName) {
        return std::nullopt;
    }
    const QByteArray nameMessage = "Ferrylane-name-v1\n" + challenge.toUtf8() + '\n' + *encodedName;
    if (!isProof(headerOf(answer, "X-Ferrylane-Proof"), key, *challengeBytes)
        || !isProof(headerOf(answer, "X-Ferrylane-Name-Proof"), key, nameMessage)) {
        return std::nullopt;
    }
    return percentDecode(QString::fromUtf8(*encodedName));
}

QString identify(const PairingLink& link)
{
    const QString challenge = newChallenge();
    if (auto name = provenName(link.key, challenge, get(link, challenge))) return *name;
    throw Failure(ExitCode::notPaired,
        QStringLiteral("the computer at %1 does not hold the key of this link")
            .arg(link.address.hostInHeader()));
}

} // namespace ferrylane::phone
