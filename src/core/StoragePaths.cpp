#include "core/StoragePaths.h"

#include "core/Log.h"
#include "core/Settings.h"
#include "platform/Folder.h"
#include "platform/UserFolders.h"

#include <QDateTime>
#include <QFileInfo>

namespace ferrylane {

namespace {

constexpr mode_t ownersFolder = 0700;
constexpr mode_t ownersFile = 0600;
/// Files that can be set aside within one second.
constexpr int maximumSetAside = 100;

QString textOf(const std::error_code& error)
{
    return QString::fromStdString(error.message());
}

QString damagedPrefix(const QString& name)
{
    return name + QStringLiteral(".damaged-");
}

/// A free name for it, and the file under it.
std::error_code moveAside(const platform::Folder& folder, const QString& name, QString& newName)
{
    const QString dated = damagedPrefix(name)
        + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'"));
    std::error_code error;
    for (int i = 1; i <= maximumSetAside; ++i) {
        newName = i == 1 ? dated : dated + u'-' + QString::number(i);
        error = folder.moveWithoutReplacing(name, folder, newName);
        if (error != std::errc::file_exists) break;
    }
    return error;
}

} // namespace

QString applicationSupportFolder()
{
    return platform::userDataFolder() + QStringLiteral("/Ferrylane");
}

QString logFolder()
{
    return platform::userStateFolder() + QStringLiteral("/Ferrylane");
}

QString receiveDir()
{
    QString folder = userSettings().string(ferrylaneReceiveFolderKey).value_or(QString());
    if (folder.isEmpty()) folder = platform::userDownloadsFolder() + QStringLiteral("/Ferrylane");
    // Without the folder, the first file that is to be written there fails and says so.
    static_cast<void>(platform::createFolders(folder));
    return folder;
}

std::error_code prepareOwnFolder(const QString& folder)
{
    if (const auto error = platform::createFolders(folder, ownersFolder)) return error;
    // Not permitted with another owner's, which may serve all the same.
    static_cast<void>(platform::setMode(folder, ownersFolder));
    std::error_code unread;
    const auto open = platform::Folder::open(folder, unread);
    const QStringList names = open ? open->names() : QStringList();
    for (const QString& name : names) {
        if (open->isFolder(name)) continue;
        static_cast<void>(platform::setMode(folder + u'/' + name, ownersFile));
    }
    return {};
}

platform::Replacement ownReplacement(const QString& path, platform::ByteView content)
{
    return {path, content, ownersFile};
}

void logWeaknesses(const QString& path, const platform::WriteResult& result)
{
    if (result.modeError) {
        flLog(
            QStringLiteral("Could not close %1 to others: %2").arg(path, textOf(result.modeError)));
    }
    if (result.syncError) {
        flLog(QStringLiteral("Stored %1, but a crash may undo that: %2")
                  .arg(path, textOf(result.syncError)));
    }
}

std::error_code writeOwnFile(const QString& path, platform::ByteView content)
{
    if (const auto error = prepareOwnFolder(QFileInfo(path).path())) return error;
    platform::Replacement replacement = ownReplacement(path, content);
    if (!replacement.commit()) return replacement.result().failure;
    replacement.sync();
    logWeaknesses(path, replacement.result());
    return {};
}

std::error_code setAside(const QString& path)
{
    const QFileInfo file(path);
    std::error_code error;
    QString newName;
    const auto folder = platform::Folder::open(file.path(), error);
    if (folder) error = moveAside(*folder, file.fileName(), newName);
    if (!error) {
        flLog(QStringLiteral("The file %1 is damaged; it is kept as %2").arg(path, newName));
    }
    return error;
}

void removeSetAside(const QString& path)
{
    const QFileInfo file(path);
    std::error_code error;
    const auto folder = platform::Folder::open(file.path(), error);
    if (!folder) return;
    for (const QString& name : folder->names()) {
        if (name.startsWith(damagedPrefix(file.fileName()))) folder->remove(name);
    }
}

} // namespace ferrylane
