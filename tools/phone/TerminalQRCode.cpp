#include "phone/TerminalQRCode.h"

namespace ferrylane::phone {

namespace {

constexpr int quietZone = 4; // modules, by the standard
constexpr const char* blackOnWhite = "\033[30;107m";
constexpr const char* usualColours = "\033[0m";

QChar halfBlock(const platform::QRCode& code, int row, int column)
{
    const bool upper = code.isDark(row, column);
    const bool lower = code.isDark(row + 1, column);
    if (upper && lower) return QChar(0x2588);
    if (upper) return QChar(0x2580);
    return lower ? QChar(0x2584) : u' ';
}

} // namespace

QString terminalText(const platform::QRCode& code)
{
    QString text;
    for (int row = -quietZone; row < code.width() + quietZone; row += 2) {
        text += QLatin1StringView(blackOnWhite);
        for (int column = -quietZone; column < code.width() + quietZone; ++column) {
            text += halfBlock(code, row, column);
        }
        text += QLatin1StringView(usualColours) + u'\n';
    }
    return text;
}

} // namespace ferrylane::phone
