#pragma once

#include "platform/SecretKey.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace ferrylane::phone {

/// Where a computer is reached, and the receiver key that it was paired with.
struct PairingLink {
    QString host; ///< a name or a numeric address; IPv6 without brackets
    std::uint16_t port = 0;
    platform::SecretKey key;

    /// The host as it stands in a Host header: IPv6 in brackets.
    [[nodiscard]] QString hostInHeader() const;
};

/// Reads "http://HOST:PORT/?flkey=KEY", as the computer shows it; other parts of the query are
/// ignored. None for anything else, such as a key that is not 32 bytes of base64url.
[[nodiscard]] std::optional<PairingLink> parsePairingLink(const QString& text);

} // namespace ferrylane::phone
