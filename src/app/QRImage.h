#pragma once

#include <QImage>
#include <QString>

namespace ferrylane {

/// The QR code of a text with `pixelsPerModule` pixels a module, black on white, without a quiet
/// zone. Null for a text that has no code.
[[nodiscard]] QImage qr(const QString& text, int pixelsPerModule);

} // namespace ferrylane
