#include "platform/DnsSd.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

namespace platform {

namespace {

constexpr qsizetype longestName = 63; // a DNS label, RFC 1035, section 2.3.4

bool isControlCharacter(QChar character)
{
    return character < QChar(0x20) || character == QChar(0x7F);
}

bool fits(QStringView text, qsizetype room)
{
    return text.toUtf8().size() <= room;
}

// What a reader takes for one character may be many code points, and longer than a whole name.
QStringView cutWithinCharacter(QStringView text, qsizetype room)
{
    while (!fits(text, room)) {
        text.chop(text.last().isLowSurrogate() ? 2 : 1);
    }
    return text;
}

QStringView cutBetweenCharacters(QStringView text, qsizetype room)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    finder.toEnd();
    QStringView rest = text;
    while (!fits(rest, room)) {
        const qsizetype boundary = finder.toPreviousBoundary();
        if (boundary <= 0) return cutWithinCharacter(rest, room);
        rest = text.first(boundary);
    }
    return rest;
}

} // namespace

QString serviceName(const QString& name, qsizetype room)
{
    QString printable = name;
    printable.removeIf(isControlCharacter);
    // A UTF-16 unit takes at least one byte. What is far too long need not be searched whole.
    printable.truncate(longestName + 1);
    // Through UTF-8, so that half a surrogate pair is what others get to see.
    return QString::fromUtf8(cutBetweenCharacters(printable, room).toUtf8());
}

QString alternativeServiceName(const QString& name)
{
    static const QRegularExpression numbered(QStringLiteral("^(.*) #([1-9][0-9]{0,8})$"),
        QRegularExpression::DotMatchesEverythingOption);
    const auto match = numbered.match(name);
    const int number = match.hasMatch() ? match.captured(2).toInt() + 1 : 2;
    const QString suffix = QStringLiteral(" #%1").arg(number);
    return serviceName(match.hasMatch() ? match.captured(1) : name, longestName - suffix.size())
        + suffix;
}

} // namespace platform
