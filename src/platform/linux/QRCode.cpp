#include "platform/QRCode.h"

#include <qrencode.h>

#include <memory>

namespace platform {

std::optional<QRCode> QRCode::ofText(const QString& text)
{
    struct Free {
        void operator()(::QRcode* code) const { QRcode_free(code); }
    };
    const QByteArray utf8 = text.toUtf8();
    if (utf8.isEmpty() || utf8.contains('\0')) return std::nullopt;
    const std::unique_ptr<::QRcode, Free> code(
        QRcode_encodeString8bit(utf8.constData(), 0, QR_ECLEVEL_M));
    if (!code) return std::nullopt;

    // The lowest bit of a module tells its colour, the others what it is for.
    const auto count
        = static_cast<std::size_t>(code->width) * static_cast<std::size_t>(code->width);
    std::vector<bool> dark(count);
    for (std::size_t i = 0; i < count; ++i) {
        dark[i] = (code->data[i] & 1U) != 0;
    }
    return QRCode(code->width, std::move(dark));
}

bool QRCode::isDark(int row, int column) const
{
    if (row < 0 || column < 0 || row >= width_ || column >= width_) return false;
    return dark_[static_cast<std::size_t>(row) * static_cast<std::size_t>(width_)
        + static_cast<std::size_t>(column)];
}

} // namespace platform
