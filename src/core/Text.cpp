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

bool breaksLine(QChar c)
{
    const char16_t unit = c.unicode();
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == 0x2028 || unit == 0x2029;
}

QString visible(QChar control)
{
    if (control == u'\n') return QStringLiteral("\\n");
    if (control == u'\r') return QStringLiteral("\\r");
    if (control == u'\t') return QStringLiteral("\\t");
    return QStringLiteral("\\u{") + QString::number(control.unicode(), 16).toUpper() + u'}';
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
    if (std::none_of(text.begin(), text.end(), breaksLine)) return text;

    QString line;
    line.reserve(text.size() + 16);
    for (const QChar c : text) {
        if (breaksLine(c)) {
            line += visible(c);
        } else {
            line += c;
        }
    }
    return line;
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
