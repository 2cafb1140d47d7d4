#include "core/ReceiveDestination.h"

#include "core/DeviceName.h"
#include "core/Text.h"

#include <QTextBoundaryFinder>
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

bool isRefusedByFat(QChar c)
{
    return c.unicode() < 0x20 || QStringView(u"\"*<>?|").contains(c);
}

bool isDotOrSpace(QChar c)
{
    return c == u'.' || c == u' ';
}

QString withoutOuterDotsAndSpaces(QStringView text)
{
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

/// The longest beginning of whole characters that has at most this many bytes of UTF-8; where even
/// the first character has more, which combining marks can make of it, of whole code points.
QString beginning(const QString& text, qsizetype maximumBytes)
{
    QByteArray bytes = text.toUtf8();
    if (bytes.size() <= maximumBytes) return text;

    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = 0;
    qsizetype usedBytes = 0;
    for (qsizetype next = finder.toNextBoundary(); next > 0; next = finder.toNextBoundary()) {
        usedBytes += QStringView(text).sliced(end, next - end).toUtf8().size();
        if (usedBytes > maximumBytes) break;
        end = next;
    }
    if (end > 0) return text.first(end);

    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    qsizetype length = std::max<qsizetype>(maximumBytes, 0);
    while (length > 0 && continues(bytes[length])) {
        --length;
    }
    return QString::fromUtf8(bytes.first(length));
}

/// A safe name taken apart, so that what distinguishes it can be put around its stem.
class NameParts {
public:
    NameParts(const QString& safe, qsizetype maximumBytes)
        : stem_(safe), maximumBytes_(maximumBytes)
    {
        const QStringView ending = dotAndExtension(safe);
        // One that is longer than the name may be is no extension that anybody needs.
        const qsizetype room = maximumBytes - ending.toUtf8().size() - longestMark;
        if (ending.isEmpty() || beginning(safe.chopped(ending.size()), room).isEmpty()) return;
        ending_ = ending.toString();
        stem_.chop(ending.size());
    }

    [[nodiscard]] QString with(const QString& front, const QString& number) const
    {
        const qsizetype others = (front + number + ending_).toUtf8().size();
        return front + beginning(stem_, maximumBytes_ - others) + number + ending_;
    }

private:
    /// A random name's bytes and the dash after it, which are more than a number's.
    static constexpr qsizetype longestMark = 37;

    QString stem_;
    QString ending_; ///< with its dot
    qsizetype maximumBytes_;
};

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

std::unique_ptr<platform::Folder> senderReceiveDirectory(const platform::Folder& receiveFolder,
    const std::optional<QString>& senderName, std::error_code& error)
{
    const QString clean = cleanSenderFolderName(senderName);
    std::unique_ptr<platform::Folder> folder;
    for (const QString& name : namesToTry(clean)) {
        folder = receiveFolder.openOrCreate(beginning(name, receiveFolder.longestName()), error);
        if (!isNameRefused(error)) break;
    }
    return folder;
}

bool isNameRefused(const std::error_code& error)
{
    return error == std::errc::invalid_argument || error == std::errc::illegal_byte_sequence;
}

QStringList namesToTry(const QString& name)
{
    QString forFat = name;
    std::replace_if(forFat.begin(), forFat.end(), isRefusedByFat, QChar(u'_'));
    if (!forFat.isEmpty() && isDotOrSpace(forFat.back())) forFat.back() = u'_';
    // Some take no other scripts, and none of the names of devices.
    QString ascii = u'_' + forFat;
    std::replace_if(
        ascii.begin(), ascii.end(), [](QChar c) { return c.unicode() > 0x7E; }, QChar(u'_'));
    return {name, forFat, ascii};
}

QString collisionSafeDestination(const QString& name, const platform::Folder& folder)
{
    const NameParts parts(sanitize(name), folder.longestName());
    const auto isFree
        = [&](const QString& free) { return !namesFolder(free) && !folder.contains(free); };
    QString candidate = parts.with({}, {});
    for (int number = 1; number <= maximumNumber && !isFree(candidate); ++number) {
        candidate = parts.with({}, QStringLiteral(" (%1)").arg(number));
    }
    if (isFree(candidate)) return candidate;
    return parts.with(QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + u'-', {});
}

} // namespace ferrylane
