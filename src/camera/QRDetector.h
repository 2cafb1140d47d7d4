#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

class QImage;

namespace ferrylane {

/// The text of the QR code in the picture, of the first one where there are several; none without
/// a code that can be read. A few milliseconds for a grey picture of 1280 x 720. Throws
/// std::exception when the picture cannot be worked on. From any thread.
[[nodiscard]] std::optional<QString> detectQRCode(const QImage& picture);

// The largest picture file that is looked at: what a phone's camera takes, and no more than a busy
// computer decodes in a second or two.
inline constexpr qsizetype maximumPictureFileBytes = qsizetype{32} * 1024 * 1024;
inline constexpr qint64 maximumPicturePixels = 25'000'000;

/// The same for the content of a picture's file, which may come from anywhere. What cannot be
/// decoded, or is larger than the limits above, has no code.
[[nodiscard]] std::optional<QString> detectQRCodeInFile(QByteArrayView content);

} // namespace ferrylane
