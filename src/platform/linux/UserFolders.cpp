#include "platform/UserFolders.h"

#include "platform/Files.h"
#include "platform/linux/ShellAssignments.h"
#include "platform/linux/UserDirs.h"

#include <QFile>

#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr qint64 maximumUserDirsBytes = 65536;

/// The root keeps its one.
QString withoutTrailingSlashes(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/')) {
        path.chop(1);
    }
    return path;
}

/// An environment variable that names a folder. The XDG base directory conventions have
/// relative paths ignored; an empty variable counts as unset.
std::optional<QString> folderVariable(const char* name)
{
    const QString value = QFile::decodeName(qgetenv(name));
    if (!value.startsWith(u'/')) return std::nullopt;
    return withoutTrailingSlashes(value);
}

QString homeFromUserDatabase()
{
    std::vector<char> strings(16384);
    passwd record{};
    passwd* found = nullptr;
    // Names services may need much room for an entry.
    while (::getpwuid_r(::getuid(), &record, strings.data(), strings.size(), &found) == ERANGE) {
        strings.resize(strings.size() * 2);
    }
    const QString home = found != nullptr ? QFile::decodeName(record.pw_dir) : QString();
    return home.startsWith(u'/') ? withoutTrailingSlashes(home) : QStringLiteral("/");
}

QString homeFolder()
{
    const auto home = folderVariable("HOME");
    return home ? *home : homeFromUserDatabase();
}

QString below(QString folder, QStringView relativePath)
{
    if (!folder.endsWith(u'/')) folder.append(u'/');
    return folder.append(relativePath);
}

QString baseFolder(const char* variable, QStringView belowHome)
{
    const auto folder = folderVariable(variable);
    return folder ? *folder : below(homeFolder(), belowHome);
}

} // namespace

std::optional<QString> downloadFolderIn(QByteArrayView userDirs, const QString& home)
{
    const QByteArray quoted = lastAssignment(userDirs, "XDG_DOWNLOAD_DIR");
    const auto value = unquoted(quoted);
    if (!value || !quoted.startsWith('"')) return std::nullopt;

    QString folder = QFile::decodeName(*value);
    // Looked for where an escaped dollar sign still differs from the variable.
    if (quoted.startsWith("\"$HOME/") || quoted == "\"$HOME\"") {
        folder.replace(0, QStringView(u"$HOME").size(), home);
    }
    if (!folder.startsWith(u'/')) return std::nullopt;
    folder = withoutTrailingSlashes(folder);
    return folder == home ? std::nullopt : std::optional(folder);
}

QString userConfigFolder()
{
    return baseFolder("XDG_CONFIG_HOME", u".config");
}

QString userDataFolder()
{
    return baseFolder("XDG_DATA_HOME", u".local/share");
}

QString userStateFolder()
{
    return baseFolder("XDG_STATE_HOME", u".local/state");
}

QString userDownloadsFolder()
{
    const QString home = homeFolder();
    const auto userDirs
        = readFile(below(userConfigFolder(), u"user-dirs.dirs"), maximumUserDirsBytes);
    const auto named = userDirs ? downloadFolderIn(*userDirs, home) : std::nullopt;
    return named ? *named : below(home, u"Downloads");
}

} // namespace platform
