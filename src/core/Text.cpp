#include "core/Text.h"

#include <QLocale>
#include <QStringDecoder>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace ferrylane {

namespace {

/// Where the first `count` characters end.
qsizetype endOfCharacters(QStringView text, qsizetype count)
{
    // A character has one code unit at least.
    if (text.size() <= count) return text.size();

    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype i = 0; i < count; ++i) {
        if (finder.toNextBoundary() < 0) return text.size();
    }
    return finder.position();
}

/// Whether it would change how the text around it is laid out, rather than be seen.
bool isControl(QChar c)
{
    const char16_t unit = c.unicode();
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x2028 && unit <= 0x202E)
        || (unit >= 0x2066 && unit <= 0x2069);
}

QString visible(QChar control)
{
    if (control == u'\n') return QStringLiteral("\\n");
    if (control == u'\r') return QStringLiteral("\\r");
    if (control == u'\t') return QStringLiteral("\\t");
    return QStringLiteral("\\u{") + QString::number(control.unicode(), 16).toUpper() + u'}';
}

// A character may have any number of marks; most of those that people write have fewer than this.
constexpr qsizetype unitsPerCharacter = 16;

/// Cut to `count` characters, the ellipsis included.
QString cut(const QString& text, qsizetype count)
{
    QStringView start = QStringView(text).first(std::min(text.size(), count * unitsPerCharacter));
    if (start.size() == text.size() && !longerThan(start, count)) return text;
    start = start.first(endOfCharacters(start, count - 1));
    if (start.back().isHighSurrogate()) start.chop(1);
    return start.toString() + u'\u2026';
}

/// Cut before and after, for a character that is made visible becomes several.
QString shortLine(const QString& text, qsizetype count)
{
    return cut(onOneLine(cut(text, count)), count);
}

} // namespace

std::optional<QString> decodeUtf8(QByteArrayView bytes)
{
    using Flag = QStringConverter::Flag;
    QStringDecoder decode(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    QString text = decode(bytes);
    if (decode.hasError()) return std::nullopt;
    return text;
}

qsizetype characterCount(QStringView text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() >= 0) {
        ++count;
    }
    return count;
}

bool longerThan(QStringView text, qsizetype count)
{
    return endOfCharacters(text, count) < text.size();
}

QString firstCharacters(const QString& text, qsizetype count)
{
    return text.first(endOfCharacters(text, count));
}

QString onOneLine(const QString& text)
{
    if (std::none_of(text.begin(), text.end(), isControl)) return text;

    QString line;
    line.reserve(text.size() + 16);
    for (const QChar c : text) {
        if (isControl(c)) {
            line += visible(c);
        } else {
            line += c;
        }
    }
    return line;
}

QString textForWindow(const QString& text)
{
    return shortLine(text, maximumWindowCharacters);
}

QString textForLog(const QString& text)
{
    return shortLine(text, maximumLogCharacters);
}

QString fileSizeText(qint64 bytes)
{
    if (bytes == 1) return QStringLiteral("1 byte");
    constexpr int decimals = 1;
    // Qt takes the absolute value, which the lowest integer has not.
    return QLocale().formattedDataSize(
        std::max<qint64>(bytes, 0), decimals, QLocale::DataSizeSIFormat);
}

} // namespace ferrylane
