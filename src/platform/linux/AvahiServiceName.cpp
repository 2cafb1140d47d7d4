#include "platform/linux/AvahiServiceName.h"

#include <QTextBoundaryFinder>

#include <memory>

#include <avahi-common/alternative.h>
#include <avahi-common/malloc.h>

namespace platform {

namespace {

constexpr qsizetype longestName = 63; // a DNS label, RFC 1035, section 2.3.4

bool isControlCharacter(QChar character)
{
    return character < QChar(0x20) || character == QChar(0x7F);
}

bool fits(QStringView text)
{
    return text.toUtf8().size() <= longestName;
}

// What a reader takes for one character may be many code points, and longer than a whole name.
QStringView cutWithinCharacter(QStringView text)
{
    while (!fits(text)) {
        text.chop(text.last().isLowSurrogate() ? 2 : 1);
    }
    return text;
}

QStringView cutBetweenCharacters(QStringView text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    finder.toEnd();
    QStringView rest = text;
    while (!fits(rest)) {
        const qsizetype boundary = finder.toPreviousBoundary();
        if (boundary <= 0) return cutWithinCharacter(rest);
        rest = text.first(boundary);
    }
    return rest;
}

} // namespace

QByteArray serviceName(const QString& name)
{
    QString printable = name;
    printable.removeIf(isControlCharacter);
    // A UTF-16 unit takes at least one byte. What is far too long need not be searched whole.
    printable.truncate(longestName + 1);
    return cutBetweenCharacters(printable).toUtf8();
}

QByteArray alternativeServiceName(const QByteArray& name)
{
    const std::unique_ptr<char, decltype(&avahi_free)> next(
        avahi_alternative_service_name(name.constData()), &avahi_free);
    return {next.get()};
}

} // namespace platform
