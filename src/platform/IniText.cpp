#include "platform/IniText.h"

#include <QList>

#include <algorithm>

namespace platform {

namespace {

constexpr int hexadecimal = 16;

bool isControl(QChar c)
{
    return c.unicode() < 0x20 || c.unicode() == 0x7F;
}

bool isHexDigit(QChar c)
{
    const char16_t unit = c.toLower().unicode();
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f');
}

QString escaped(QChar c)
{
    switch (c.unicode()) {
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    case u'\t':
        return QStringLiteral("\\t");
    case u'"':
    case u'\\':
        return QString(u'\\') + c;
    default:
        return QStringLiteral("\\x") + QString::number(c.unicode(), hexadecimal);
    }
}

QString quoted(const QString& text)
{
    QString result(u'"');
    bool afterNumber = false;
    for (const QChar c : text) {
        // A digit after an escaped number would be read as part of it.
        const bool needsEscape
            = isControl(c) || c == u'"' || c == u'\\' || (afterNumber && isHexDigit(c));
        const QString written = needsEscape ? escaped(c) : QString(c);
        afterNumber = written.startsWith(u"\\x");
        result += written;
    }
    return result + u'"';
}

QByteArray encoded(const QString& value)
{
    // QSettings takes what follows a single @ for a value that is no text.
    const QString text = value.startsWith(u'@') ? u'@' + value : value;
    const bool isPlain = !text.isEmpty() && text == text.trimmed()
        && std::none_of(text.begin(), text.end(),
            [](QChar c) { return isControl(c) || QStringView(u"\\\",;=").contains(c); });
    return (isPlain ? text : quoted(text)).toUtf8();
}

/// Takes an escape, whose backslash has been taken, from the front.
QString takeEscape(QStringView& rest)
{
    if (rest.isEmpty()) return {};
    const QChar kind = rest.front();
    rest = rest.sliced(1);
    if (kind == u'n') return QStringLiteral("\n");
    if (kind == u'r') return QStringLiteral("\r");
    if (kind == u't') return QStringLiteral("\t");
    if (kind != u'x') return kind;
    const auto* const end = std::find_if_not(rest.begin(), rest.end(), isHexDigit);
    const QStringView digits = rest.first(end - rest.begin());
    rest = rest.sliced(digits.size());
    return QChar(digits.toUShort(nullptr, hexadecimal));
}

/// From behind the opening quote up to the closing one, or to the end.
QString unquoted(QStringView rest)
{
    QString text;
    while (!rest.isEmpty() && rest.front() != u'"') {
        const QChar c = rest.front();
        rest = rest.sliced(1);
        text += c == u'\\' ? takeEscape(rest) : QString(c);
    }
    return text;
}

QString decoded(const QByteArray& written)
{
    QString text = QString::fromUtf8(written).trimmed();
    if (text.startsWith(u'"')) {
        text = unquoted(QStringView(text).sliced(1));
    } else {
        // The two that QSettings escapes without quotes.
        for (qsizetype at = 0; (at = text.indexOf(u'\\', at)) >= 0; ++at) {
            const QStringView next = QStringView(text).mid(at + 1, 1);
            if (next == u"\\" || next == u"\"") text.remove(at, 1);
        }
    }
    return text.startsWith(u"@@") ? text.sliced(1) : text;
}

/// A line and what it means here.
struct Line {
    QByteArray text;
    bool isGeneral = false; ///< whether it stands in the section that counts, or begins it
    QString key;            ///< empty when it is no "key=value" of that section
};

QList<Line> linesOf(QByteArray text)
{
    constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
    if (text.startsWith(byteOrderMark)) text.remove(0, byteOrderMark.size());
    if (text.endsWith('\n')) text.chop(1);
    QList<Line> lines;
    if (text.isEmpty()) return lines;

    bool isGeneral = true;
    for (const QByteArray& written : text.split('\n')) {
        const QByteArray line = written.trimmed();
        if (line.startsWith('[')) isGeneral = line.toLower() == "[general]";
        const bool isEntry = isGeneral && !line.startsWith('[') && !line.startsWith(';');
        const qsizetype equals = isEntry ? line.indexOf('=') : -1;
        lines.append({written, isGeneral,
            QString::fromUtf8(line.left(std::max<qsizetype>(equals, 0)).trimmed())});
    }
    return lines;
}

QByteArray entry(const QString& key, const QString& value)
{
    return key.toUtf8() + '=' + encoded(value);
}

/// Where an entry that is new goes: behind the section's last line.
qsizetype endOfSection(QList<Line>& lines)
{
    for (qsizetype i = lines.size(); i > 0; --i) {
        if (lines[i - 1].isGeneral && !lines[i - 1].text.trimmed().isEmpty()) return i;
    }
    lines.prepend({QByteArrayLiteral("[General]"), true, {}});
    return 1;
}

} // namespace

QMap<QString, QString> iniValues(const QByteArray& text)
{
    QMap<QString, QString> values;
    for (const Line& line : linesOf(text)) {
        if (!line.key.isEmpty()) {
            values.insert(line.key, decoded(line.text.sliced(line.text.indexOf('=') + 1)));
        }
    }
    return values;
}

QByteArray withIniValues(
    const QByteArray& text, const QMap<QString, std::optional<QString>>& changes)
{
    QList<Line> lines = linesOf(text);
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        // The last of several counts when they are read, so only one may stay.
        const auto isSame = [&](const Line& line) { return line.key == change.key(); };
        const auto first = std::find_if(lines.begin(), lines.end(), isSame);
        const qsizetype place = first - lines.begin();
        const bool isNew = first == lines.end();
        lines.removeIf(isSame);
        if (!change.value()) continue;
        const Line line{entry(change.key(), *change.value()), true, change.key()};
        lines.insert(isNew ? endOfSection(lines) : place, line);
    }
    QByteArray result;
    for (const Line& line : lines) {
        result += line.text + '\n';
    }
    return result;
}

} // namespace platform
