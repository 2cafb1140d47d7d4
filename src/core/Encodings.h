#pragma once

#include "platform/Bytes.h"

#include <QJsonDocument>

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

/// Replaces each percent sign and its two hexadecimal digits (RFC 3986, section 2.1) by the byte
/// that they stand for, and reads the whole as UTF-8. Strict: none when a percent sign lacks its
/// digits or the bytes are not UTF-8 (RFC 3629: no overlong forms, no surrogates). Any other
/// character stands for itself, a plus sign too.
[[nodiscard]] std::optional<QString> percentDecode(QStringView text);

/// ASCII letters and digits and !$&'()*+,-./:;=?@_~ stay, which are the characters that may stand
/// in the query of a URL; of everything else each UTF-8 byte becomes % and two upper-case digits.
[[nodiscard]] QString percentEncodeForQuery(QStringView text);

/// Letters, marks and numbers of every script (Unicode general categories L, M and N) and -._~
/// stay; of everything else each UTF-8 byte becomes % and two upper-case digits.
[[nodiscard]] QString percentEncodeFileName(QStringView name);

/// Compact JSON that QJsonDocument reads as it was: it would take U+FEFF at the start of a text for
/// a byte order mark and drop it, but not an escaped one.
[[nodiscard]] QByteArray compactJson(const QJsonDocument& document);

} // namespace ferrylane
