#include "protocol/IdentifyHandshake.h"

#include "core/Encodings.h"
#include "platform/Crypto.h"

namespace ferrylane {

namespace {

/// What the message of a name proof begins with. A challenge that does so, too, is none: the proof
/// over it could be shown as that of a name.
constexpr QByteArrayView nameTag("Ferrylane-name-v1");

bool isChallenge(const QByteArray& bytes)
{
    return bytes.size() >= shortestChallenge && bytes.size() <= longestChallenge
        && !bytes.startsWith(nameTag);
}

QByteArray proof(const platform::SecretKey& key, const QByteArray& message)
{
    return base64URLEncode(platform::hmacSha256(key, platform::bytesOf(message))).toLatin1();
}

} // namespace

std::optional<QByteArray> identifyResponse(const platform::SecretKey& key,
    const std::optional<QString>& challenge, const QString& deviceName)
{
    const auto bytes = challenge ? base64URLDecode(*challenge) : std::nullopt;
    if (!bytes || !isChallenge(*bytes)) return std::nullopt;
    const QByteArray encodedName = percentEncodeForQuery(deviceName).toLatin1();
    // The text of the challenge as it came, so that the name proof binds its spelling as well.
    const QByteArray nameMessage
        = nameTag.toByteArray() + '\n' + challenge->toUtf8() + '\n' + encodedName;
    return QByteArray("HTTP/1.1 200 OK\r\n"
                      "Content-Length: 0\r\n"
                      "Connection: close\r\n"
                      "Cache-Control: no-store\r\n"
                      "X-Ferrylane-Proof: ")
        + proof(key, *bytes) + "\r\nX-Ferrylane-Name: " + encodedName
        + "\r\nX-Ferrylane-Name-Proof: " + proof(key, nameMessage) + "\r\n\r\n";
}

} // namespace ferrylane
