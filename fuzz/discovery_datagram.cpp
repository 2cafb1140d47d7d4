#include "fuzz/Target.h"
#include "protocol/DiscoveryProtocol.h"

#include <QByteArrayList>

namespace {

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

/// A device that says what was read of a reply is read the same.
void checkReading(const QByteArray& datagram)
{
    const auto reply = ferrylane::parseDiscoveryReply(platform::bytesOf(datagram));
    if (!reply) return;
    require(datagram.startsWith("FERRYLANE_HERE_V1|"));
    require(!reply->name.isEmpty() && reply->name == reply->name.trimmed());
    require(!reply->name.contains(u'|') && reply->tcpPort != 0);
    if (!reply->tcpPort || reply->name.contains(u'\n')) return;
    const QByteArray again = ferrylane::discoveryReply(reply->name, *reply->tcpPort);
    require(ferrylane::parseDiscoveryReply(platform::bytesOf(again)) == reply);
}

/// This computer's own replies are readable, unless its name is but blanks.
void checkOwnReply(const QString& name)
{
    const QByteArray reply = ferrylane::discoveryReply(name, 8788);
    const QString sent = QString(name).replace(u'|', u' ').replace(u'\n', u' ').trimmed();
    const auto read = ferrylane::parseDiscoveryReply(platform::bytesOf(reply));
    require(read.has_value() == !sent.isEmpty());
    require(!read || (read->name == sent && read->tcpPort == 8788));
}

} // namespace

void check(const QByteArray& input)
{
    checkRequest(input);
    checkReading(input);
    checkOwnReply(QString::fromUtf8(input));
    checkReply(QString::fromUtf8(input), static_cast<std::uint16_t>(input.size() * 257));
}
