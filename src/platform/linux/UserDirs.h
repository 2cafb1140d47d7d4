#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace platform {

/// The download folder that the content of a user-dirs.dirs file names; none when it names none
/// that is absolute or below "$HOME", or the home folder itself, which is that file's way to say
/// that there is no such folder. `home` has no slash at its end unless it is the root.
[[nodiscard]] std::optional<QString> downloadFolderIn(QByteArrayView userDirs, const QString& home);

} // namespace platform
