#include "app/QRImage.h"

#include "platform/QRCode.h"

namespace ferrylane {

QImage qr(const QString& text, int pixelsPerModule)
{
    const auto code = platform::QRCode::ofText(text);
    if (!code) return {};
    QImage modules(code->width(), code->width(), QImage::Format_RGB32);
    for (int row = 0; row < code->width(); ++row) {
        for (int column = 0; column < code->width(); ++column) {
            modules.setPixelColor(column, row, code->isDark(row, column) ? Qt::black : Qt::white);
        }
    }
    return modules.scaled(modules.size() * pixelsPerModule);
}

} // namespace ferrylane
