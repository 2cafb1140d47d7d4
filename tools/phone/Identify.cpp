#include "phone/Identify.h"

#include "core/Base64Url.h"
#include "core/PercentCoding.h"
#include "phone/Failure.h"
#include "phone/HttpGet.h"
#include "platform/Crypto.h"

#include <array>

namespace ferrylane::phone {

namespace {

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

} // namespace

std::optional<QString> provenName(
    const platform::SecretKey& key, const QString& challenge, const HttpResponse& answer)
{
    const auto challengeBytes = base64URLDecode(challenge);
    const auto encodedName = answer.header("X-Ferrylane-Name");
    if (answer.status != 200 || !challengeBytes || !encodedName) return std::nullopt;

    const QByteArray nameMessage = "Ferrylane-name-v1\n" + challenge.toUtf8() + '\n' + *encodedName;
    if (!isProof(answer.header("X-Ferrylane-Proof"), key, *challengeBytes)
        || !isProof(answer.header("X-Ferrylane-Name-Proof"), key, nameMessage)) {
        return std::nullopt;
    }
    return percentDecode(QString::fromUtf8(*encodedName));
}

QString identify(platform::TcpNetwork& network, const PairingLink& link)
{
    const QString challenge = newChallenge();
    const HttpResponse answer = get(network, link, "/secure-identify",
        "X-Ferrylane-Challenge: " + challenge.toLatin1() + "\r\n");
    if (const auto name = provenName(link.key, challenge, answer)) return *name;
    throw Failure(ExitCode::notPaired,
        QStringLiteral("the computer at %1 does not hold the key of this link")
            .arg(link.address.hostInHeader()));
}

} // namespace ferrylane::phone
