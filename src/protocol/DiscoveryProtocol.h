#pragma once

#include "platform/Bytes.h"

#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <optional>

namespace ferrylane {

// How devices find each other over UDP. Who seeks sends the request to the broadcast address; each
// device answers the sender with a reply: the tag, "|", its name, "|" and its TCP port in decimal.
// Each fills one datagram, as UTF-8 text.

inline constexpr std::uint16_t discoveryPort = 8789;
inline constexpr QByteArrayView discoveryRequest = "FERRYLANE_DISCOVER_V1";
inline constexpr QByteArrayView discoveryReplyPrefix = "FERRYLANE_HERE_V1|";
/// What is read of a datagram; longer ones are cut.
inline constexpr std::size_t maximumDiscoveryBytes = 512;

/// Only the request's exact bytes are one.
[[nodiscard]] bool isDiscoveryRequest(platform::ByteView datagram);

/// The reply of a device of this name. Each "|" and line feed in the name becomes a space: they
/// would read as the end of the name or of the text.
[[nodiscard]] QByteArray discoveryReply(const QString& name, std::uint16_t tcpPort);

/// What a device says of itself.
struct DiscoveryReply {
    QString name; ///< trimmed, never empty
    /// Where its receiver listens: 8787 when the reply has no number there. None when the number is
    /// no TCP port: the device is there, but cannot be reached.
    std::optional<std::uint16_t> tcpPort;

    bool operator==(const DiscoveryReply&) const = default;
};

/// Reads a reply. None when the datagram is not UTF-8, lacks the tag, a name that is more than
/// white space, or anything after the name's "|". Empty fields before the name are passed over. The
/// rest of the text is the port: decimal digits after at most one sign.
[[nodiscard]] std::optional<DiscoveryReply> parseDiscoveryReply(platform::ByteView datagram);

} // namespace ferrylane
