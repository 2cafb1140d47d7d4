#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace platform {

/// A QR code (ISO/IEC 18004), error correction level M, without the quiet zone of four modules that
/// must surround it.
class QRCode {
public:
    /// None for an empty text, or one longer than a QR code holds (2331 bytes of UTF-8).
    [[nodiscard]] static std::optional<QRCode> ofText(const QString& text);

    /// Modules on each side, 21 to 177.
    [[nodiscard]] int width() const { return width_; }
    /// False outside.
    [[nodiscard]] bool isDark(int row, int column) const;

private:
    QRCode(int width, std::vector<bool> dark) : width_(width), dark_(std::move(dark)) {}

    int width_;
    std::vector<bool> dark_;
};

} // namespace platform
