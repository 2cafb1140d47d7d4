#include "discovery/DiscoveryProtocol.h"

#include <QByteArrayList>

#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) std::abort();
}

void checkRequest(const QByteArray& datagram)
{
    const bool isRequest = ferrylane::isDiscoveryRequest(platform::bytesOf(datagram));
    require(isRequest == (datagram == "FERRYLANE_DISCOVER_V1"));
}

/// Any name gives three fields in one line of text, and keeps its length.
void checkReply(const QString& name, std::uint16_t tcpPort)
{
    const QByteArray reply = ferrylane::discoveryReply(name, tcpPort);
    const QByteArrayList fields = reply.split('|');
    require(fields.size() == 3);
    require(fields[0] == "FERRYLANE_HERE_V1");
    require(fields[1].size() == name.toUtf8().size());
    require(fields[2] == QByteArray::number(tcpPort));
    require(!reply.contains('\n'));
    require(QString::fromUtf8(reply).toUtf8() == reply);
    require(!ferrylane::isDiscoveryRequest(platform::bytesOf(reply)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray datagram(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    checkRequest(datagram);
    checkReply(QString::fromUtf8(datagram), static_cast<std::uint16_t>(size * 257));
    return 0;
}
