#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace ferrylane {

/// The parts of "http://HOST:PORT/?flkey=KEY&name=NAME", the form of pairing texts in both
/// directions.
struct PairingUrl {
    QString host; ///< as it stands in a URL: ASCII, IPv6 in brackets
    std::uint16_t port = 0;
    QString keyText; ///< percent-decoded; it decodes to 32 bytes (base64URLDecode())
    QString name;    ///< percent-decoded; empty when there is none
};

/// Reads a pairing text: "http" in any case of letters, a host, a port and, among the items of the
/// query, a "flkey" of 32 bytes. Of items with the same name the first counts. User, path, fragment
/// and other items are ignored. A name that is not percent-encoded UTF-8 counts as none; in a key
/// that is an error. None for anything else.
[[nodiscard]] std::optional<PairingUrl> parsePairingUrl(const QString& text);

} // namespace ferrylane
