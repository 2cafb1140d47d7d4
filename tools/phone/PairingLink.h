#pragma once

#include "platform/SecretKey.h"
#include "sender/TargetAddress.h"

#include <QString>

#include <optional>

namespace ferrylane::phone {

/// Where a computer is reached, and the receiver key that it was paired with.
struct PairingLink {
    TargetAddress address;
    platform::SecretKey key;
};

/// Reads "http://HOST:PORT/?flkey=KEY", as the computer shows it; other parts of the query are
/// ignored. HOST may be an address with its zone ("[fe80::1%eth0]"). None for anything else, such
/// as a key that is not 32 bytes of base64url.
[[nodiscard]] std::optional<PairingLink> parsePairingLink(const QString& text);

} // namespace ferrylane::phone
