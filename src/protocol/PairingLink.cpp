#include "protocol/PairingLink.h"

#include "core/Encodings.h"

namespace ferrylane {

QString ferrylanePairingLink(const QString& host, std::uint16_t tcpPort, const QString& keyText)
{
    return QStringLiteral("http://") + host + u':' + QString::number(tcpPort)
        + QStringLiteral("/?flkey=") + keyText;
}

QString ferrylanePairingLink(
    const QString& host, std::uint16_t tcpPort, const QString& keyText, const QString& deviceName)
{
    const QString name
        = deviceName.isValidUtf16() ? percentEncodeForQuery(deviceName) : QStringLiteral("Mac");
    return ferrylanePairingLink(host, tcpPort, keyText) + QStringLiteral("&name=") + name;
}

} // namespace ferrylane
