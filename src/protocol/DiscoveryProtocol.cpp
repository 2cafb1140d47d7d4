#include "protocol/DiscoveryProtocol.h"

#include "core/Text.h"
#include "protocol/PairingLink.h"

#include <charconv>
#include <limits>

namespace ferrylane {

namespace {

/// What does not fit 64 bits is no number.
std::optional<std::int64_t> signedNumber(QByteArrayView text)
{
    // A minus is read by from_chars() itself.
    if (text.startsWith('+')) {
        text = text.sliced(1);
        if (text.startsWith('-')) return std::nullopt;
    }
    std::int64_t value = 0;
    const auto result = std::from_chars(text.begin(), text.end(), value);
    if (result.ec != std::errc() || result.ptr != text.end()) return std::nullopt;
    return value;
}

std::optional<std::uint16_t> portIn(QByteArrayView field)
{
    const std::int64_t number = signedNumber(field).value_or(phonePort);
    if (number < 1 || number > std::numeric_limits<std::uint16_t>::max()) return std::nullopt;
    return static_cast<std::uint16_t>(number);
}

} // namespace

bool isDiscoveryRequest(platform::ByteView datagram)
{
    return platform::textViewOf(datagram) == discoveryRequest;
}

QByteArray discoveryReply(const QString& name, std::uint16_t tcpPort)
{
    const QByteArray safeName = name.toUtf8().replace('|', ' ').replace('\n', ' ');
    return discoveryReplyPrefix.toByteArray() + safeName + '|' + QByteArray::number(tcpPort);
}

std::optional<DiscoveryReply> parseDiscoveryReply(platform::ByteView datagram)
{
    const QByteArrayView text = platform::textViewOf(datagram);
    if (!text.startsWith(discoveryReplyPrefix)) return std::nullopt;
    const auto fields = decodeUtf8(text.sliced(discoveryReplyPrefix.size()));
    if (!fields) return std::nullopt;
    QStringView rest(*fields);
    while (rest.startsWith(u'|')) {
        rest = rest.sliced(1);
    }
    const qsizetype end = rest.indexOf(u'|');
    if (end < 0 || end + 1 == rest.size()) return std::nullopt;
    const QString name = rest.first(end).trimmed().toString();
    if (name.isEmpty()) return std::nullopt;
    return DiscoveryReply{name, portIn(rest.sliced(end + 1).toUtf8())};
}

} // namespace ferrylane
