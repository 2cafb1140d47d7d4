#include "core/Log.h"

#include "core/StoragePaths.h"
#include "core/Text.h"
#include "platform/Files.h"

#include <QDateTime>

#include <mutex>
#include <utility>

namespace ferrylane {

namespace {

QString logPath()
{
    return logFolder() + QStringLiteral("/ferrylane.log");
}

QString dated(const QString& text)
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate) + text + u'\n';
}

platform::WriteResult append(const QString& line)
{
    constexpr mode_t ownerOnly = 0600;
    return platform::appendToFile(logPath(), platform::bytesOf(line.toUtf8()), ownerOnly);
}

/// Makes the folder, and closes what somebody has opened to others.
void prepare()
{
    constexpr mode_t ownersFolder = 0700;
    constexpr mode_t ownersFile = 0600;
    if (platform::createFolders(logFolder(), ownersFolder)) return;
    // Where that is not permitted, or there is no file yet, it serves all the same.
    static_cast<void>(platform::setMode(logFolder(), ownersFolder));
    static_cast<void>(platform::setMode(logPath(), ownersFile));
}

} // namespace

void flLog(const QString& message)
{
    static std::mutex mutex;
    static QString preparedFolder;
    const QString text = QStringLiteral("  ") + textForLog(message);

    // The time is taken under the lock, so that the lines stand in the order of their times.
    const std::lock_guard lock(mutex);
    const QString line = dated(text);
    // Looked after at the first line, and then only when it is missed.
    if (std::exchange(preparedFolder, logFolder()) != logFolder()) prepare();
    platform::WriteResult result = append(line);
    if (result.failure == std::errc::no_such_file_or_directory) {
        prepare();
        result = append(line);
    }
    if (!result.modeError) return;
    static_cast<void>(append(dated(QStringLiteral("  Could not close the log to others: ")
        + QString::fromStdString(result.modeError.message()))));
}

} // namespace ferrylane
