#pragma once

#include "support/EnvironmentVariable.h"

#include <QString>
#include <QTemporaryDir>

namespace support {

/// Gives this process an empty home folder of its own, and the XDG base folders in it: settings,
/// data, log and downloads start from nothing, and nothing of the user's is touched. In the end the
/// environment is as it was and the folder is gone. To be made before other threads start, and to
/// outlive them: they read the environment.
class PrivateUserFolders {
public:
    PrivateUserFolders();
    ~PrivateUserFolders();
    PrivateUserFolders(const PrivateUserFolders&) = delete;
    PrivateUserFolders& operator=(const PrivateUserFolders&) = delete;

    /// The path of something in the home folder, by its path below it.
    [[nodiscard]] QString below(const QString& path) const { return folder_.filePath(path); }
    /// Makes a file in the home folder; returns its path.
    [[nodiscard]] QString file(const QString& name, const QByteArray& content) const;

    // Where the program puts its folder "Ferrylane". None is created here.
    [[nodiscard]] QString config() const { return below(QStringLiteral("config")); }
    [[nodiscard]] QString data() const { return below(QStringLiteral("data")); }
    [[nodiscard]] QString state() const { return below(QStringLiteral("state")); }
    [[nodiscard]] QString downloads() const { return below(QStringLiteral("Downloads")); }

    /// What this process has logged.
    [[nodiscard]] QString log() const;

private:
    QTemporaryDir folder_;
    EnvironmentVariable homeVariable_;
    EnvironmentVariable configVariable_;
    EnvironmentVariable dataVariable_;
    EnvironmentVariable stateVariable_;
    EnvironmentVariable cacheVariable_;
};

} // namespace support
