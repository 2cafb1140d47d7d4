#include "core/ReceiveDestination.h"

#include "core/DeviceName.h"
#include "core/Text.h"
#include "platform/Files.h"

#include <QStringBuilder>
#include <QUuid>

#include <algorithm>

namespace ferrylane {

namespace {

constexpr qsizetype maximumFolderNameCharacters = 80;
constexpr int maximumNumber = 9999;

bool isForbidden(QChar c)
{
    return c == u'/' || c == u'\\' || c == u':' || c.isNull();
}

QString withoutOuterDotsAndSpaces(QStringView text)
{
    const auto isDotOrSpace = [](QChar c) { return c == u'.' || c == u' '; };
    while (!text.isEmpty() && isDotOrSpace(text.front())) {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && isDotOrSpace(text.back())) {
        text.chop(1);
    }
    return text.toString();
}

/// The part after the last dot with that dot, or nothing. A name that begins with its only dot is a
/// hidden file's and has no extension.
QStringView dotAndExtension(QStringView name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0 || dot == name.size() - 1) return {};
    const QStringView extension = name.sliced(dot + 1);
    const bool hasBlank
        = std::any_of(extension.begin(), extension.end(), [](QChar c) { return c.isSpace(); });
    return hasBlank ? QStringView() : name.sliced(dot);
}

/// These name a folder that exists, even where it has just been deleted.
bool namesFolder(const QString& name)
{
    return name.isEmpty() || name == u"." || name == u"..";
}

} // namespace

QString sanitize(const QString& name)
{
    QString safe = name;
    std::replace_if(safe.begin(), safe.end(), isForbidden, QChar(u'_'));
    return safe;
}

QString cleanSenderFolderName(const std::optional<QString>& senderName)
{
    const QString name = withoutProductPrefix(senderName.value_or(QString()).trimmed());
    const QString safe = withoutOuterDotsAndSpaces(sanitize(name));
    if (safe.isEmpty()) return QStringLiteral("Unknown device");
    return firstCharacters(safe, maximumFolderNameCharacters);
}

QString senderReceiveDirectory(const std::optional<QString>& senderName)
{
    QString folder = receiveDir() + u'/' + cleanSenderFolderName(senderName);
    static_cast<void>(platform::createFolders(folder));
    return folder;
}

QString collisionSafeDestination(const QString& name, const QString& folder)
{
    const QString inFolder = folder + u'/';
    const QString safe = sanitize(name);
    if (!namesFolder(safe) && !platform::itemExists(inFolder + safe)) return inFolder + safe;

    const QStringView ending = dotAndExtension(safe);
    const QStringView stem = QStringView(safe).chopped(ending.size());
    for (int number = 1; number <= maximumNumber; ++number) {
        QString candidate = inFolder % stem % u" (" % QString::number(number) % u')' % ending;
        if (!platform::itemExists(candidate)) return candidate;
    }
    return inFolder + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + u'-' + safe;
}

} // namespace ferrylane
