#include "platform/UserFolders.h"

#include <QDir>
#include <QStandardPaths>

#include <array>
#include <optional>

#include <pwd.h>
#include <unistd.h>

namespace platform {

namespace {

std::optional<QString> folderVariable(const char* name)
{
    const QString value = QFile::decodeName(qgetenv(name));
    return value.startsWith(u'/') ? std::optional(QDir::cleanPath(value)) : std::nullopt;
}

QString homeFolder()
{
    if (auto home = folderVariable("HOME")) return *home;
    std::array<char, 65536> strings{};
    passwd record{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &record, strings.data(), strings.size(), &found);
    return found != nullptr ? QFile::decodeName(record.pw_dir) : QStringLiteral("/");
}

// Not QStandardPaths: it knows no state folder before Qt 6.7, and takes relative paths.
QString baseFolder(const char* variable, QLatin1StringView belowHome)
{
    const auto folder = folderVariable(variable);
    return folder ? *folder : QDir::cleanPath(homeFolder() + u'/' + belowHome);
}

} // namespace

QString userConfigFolder()
{
    return baseFolder("XDG_CONFIG_HOME", QLatin1StringView(".config"));
}

QString userDataFolder()
{
    return baseFolder("XDG_DATA_HOME", QLatin1StringView(".local/share"));
}

QString userStateFolder()
{
    return baseFolder("XDG_STATE_HOME", QLatin1StringView(".local/state"));
}

QString userDownloadsFolder()
{
    const auto home = folderVariable("HOME");
    const QString named = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    const bool isNamed = home && named.startsWith(u'/') && named != *home;
    return isNamed ? named : QDir::cleanPath(homeFolder() + QStringLiteral("/Downloads"));
}

} // namespace platform
