#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <string>

namespace support {

/// A file of docs/vectors, which another implementation has written; its README.md tells what the
/// members are. Each function ends the program where a file or a member is not as it says.
[[nodiscard]] QJsonObject vectorObject(const QString& file);
/// The rows that the file consists of, or those of one of its members.
[[nodiscard]] QJsonArray vectorRows(const QString& file);
[[nodiscard]] QJsonArray vectorRows(const QString& file, const QString& member);

/// Bytes given as a text, or as parts: texts or hexadecimal digits, each perhaps repeated.
[[nodiscard]] QByteArray vectorBytes(const QJsonValue& parts);
[[nodiscard]] QByteArray vectorHex(const QJsonValue& digits);
/// None where the member is null or missing.
[[nodiscard]] std::optional<QString> vectorText(const QJsonValue& text);
/// The row itself, for what a failed expectation tells.
[[nodiscard]] std::string vectorTrace(const QJsonValue& row);

} // namespace support
