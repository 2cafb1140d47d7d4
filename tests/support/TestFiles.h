#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace support {

/// Makes the folders that the file lies in, too. Ends the program when it cannot be written.
void writeFile(const QString& path, const QByteArray& content = {});
/// Empty where there is no file.
[[nodiscard]] QByteArray contentOf(const QString& path);
/// The permissions, set-user-id and the like included; of a link itself, not of its target.
[[nodiscard]] mode_t modeOf(const QString& path);
/// The names of all that lies in a folder, hidden or not.
[[nodiscard]] QStringList everythingIn(const QString& folder);

} // namespace support
