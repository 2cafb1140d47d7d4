#pragma once

#include <QByteArray>
#include <QJsonDocument>

namespace ferrylane {

/// Compact JSON that QJsonDocument reads as it was: it would take U+FEFF at the start of a text for
/// a byte order mark and drop it, but not an escaped one.
[[nodiscard]] QByteArray compactJson(const QJsonDocument& document);

} // namespace ferrylane
