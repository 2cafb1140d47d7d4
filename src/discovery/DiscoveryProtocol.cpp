#include "discovery/DiscoveryProtocol.h"

namespace ferrylane {

bool isDiscoveryRequest(platform::ByteView datagram)
{
    return platform::textViewOf(datagram) == discoveryRequest;
}

QByteArray discoveryReply(const QString& name, std::uint16_t tcpPort)
{
    const QByteArray safeName = name.toUtf8().replace('|', ' ').replace('\n', ' ');
    return discoveryReplyPrefix.toByteArray() + safeName + '|' + QByteArray::number(tcpPort);
}

} // namespace ferrylane
