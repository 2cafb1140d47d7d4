#pragma once

#include "protocol/PairedTarget.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace ferrylane {

/// The TCP port of a phone's receiver, unless a phone says otherwise.
inline constexpr std::uint16_t phonePort = 8787;

/// What people see of a name, at most, in characters as they see them.
inline constexpr qsizetype maximumPhoneNameCharacters = 80;

/// Reads the pairing QR code that a phone shows: a pairing URL (see parsePairingUrl()) on the port
/// 8787. The name loses a leading "fl ", is trimmed and cut to 80 characters, and is "Android" when
/// there is none. The key is kept as it is written. None for any other text. From any thread.
[[nodiscard]] std::optional<FerrylanePairedTarget> parseFerrylanePairingQR(const QString& text);

} // namespace ferrylane
