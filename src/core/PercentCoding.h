#pragma once

#include <QString>

#include <optional>

namespace ferrylane {

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

} // namespace ferrylane
