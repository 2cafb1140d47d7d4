#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>

namespace platform {

// Settings as text: lines "key=value" in the section [General] or before any section, UTF-8, in the
// form that QSettings gives an INI file. Keys are letters, digits, "_", "-" and ".".
//
// A value in quotes has escapes (\\ \" \n \r \t \x1B). One without quotes, which people write too,
// is what stands there: commas, semicolons, equals signs and backslashes are characters like any
// other, only \\ and \" stand for one character.

/// The values of the section; of a damaged text those that can be read.
[[nodiscard]] QMap<QString, QString> iniValues(const QByteArray& text);

/// The text in which these keys have these values, or are gone. All else, such as remarks, other
/// sections and what cannot be read, stays as it is.
[[nodiscard]] QByteArray withIniValues(
    const QByteArray& text, const QMap<QString, std::optional<QString>>& changes);

} // namespace platform
