#pragma once

#include "platform/Bytes.h"

#include <optional>

namespace ferrylane {

/// Decodes base64url without padding and standard base64 (RFC 4648, sections 5 and 4) alike,
/// padding the text first where it lacks it. Strict: none when there is any other character,
/// padding other than at the end, or a length that no bytes encode to. Bits of the last character
/// that belong to no byte are not looked at.
[[nodiscard]] std::optional<QByteArray> base64URLDecode(QStringView text);

[[nodiscard]] inline std::optional<QByteArray> decodeFerrylaneBase64URL(QStringView text)
{
    return base64URLDecode(text);
}

/// Base64url without padding: the one form in which keys, proofs and the like are written as text.
[[nodiscard]] QString base64URLEncode(platform::ByteView bytes);

} // namespace ferrylane
