#pragma once

#include <QByteArray>
#include <QString>

namespace platform {

/// `name` as the UTF-8 of a DNS-SD instance name (RFC 6763, section 4.1.1): without ASCII control
/// characters, and cut at a character boundary to 63 bytes. May be empty, and then cannot be
/// announced.
[[nodiscard]] QByteArray serviceName(const QString& name);

/// What to try when `name` is taken: "name #2", then "name #3" and so on, never longer than 63
/// bytes.
[[nodiscard]] QByteArray alternativeServiceName(const QByteArray& name);

} // namespace platform
