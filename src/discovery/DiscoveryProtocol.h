#pragma once

#include "platform/Bytes.h"

#include <QByteArrayView>
#include <QString>

#include <cstdint>

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

} // namespace ferrylane
