#include "receiver/IdentifyHandshake.h"

#include "core/Base64Url.h"
#include "core/PercentCoding.h"
#include "platform/Crypto.h"

namespace ferrylane {

namespace {

QByteArray proof(const platform::SecretKey& key, const QByteArray& message)
{
    return base64URLEncode(platform::hmacSha256(key, platform::bytesOf(message))).toLatin1();
}

} // namespace

std::optional<QByteArray> identifyResponse(const platform::SecretKey& key,
    const std::optional<QString>& challenge, const QString& deviceName)
{
    const auto bytes = challenge ? base64URLDecode(*challenge) : std::nullopt;
    if (!bytes || bytes->size() < shortestChallenge || bytes->size() > longestChallenge) {
        return std::nullopt;
    }
    const QByteArray encodedName = percentEncodeForQuery(deviceName).toLatin1();
    // The text of the challenge as it came, so that the name proof binds its spelling as well.
    const QByteArray nameMessage = "Ferrylane-name-v1\n" + challenge->toUtf8() + "\n" + encodedName;
    return QByteArray("HTTP/1.1 200 OK\r\n"
                      "Content-Length: 0\r\n"
                      "Connection: close\r\n"
                      "Cache-Control: no-store\r\n"
                      "X-Ferrylane-Proof: ")
        + proof(key, *bytes) + "\r\nX-Ferrylane-Name: " + encodedName
        + "\r\nX-Ferrylane-Name-Proof: " + proof(key, nameMessage) + "\r\n\r\n";
}

} // namespace ferrylane
