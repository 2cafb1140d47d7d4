#include "core/Log.h"

#include "core/StoragePaths.h"
#include "core/Text.h"
#include "platform/Files.h"

#include <QDateTime>

#include <mutex>

namespace ferrylane {

namespace {

std::error_code append(const QString& line)
{
    constexpr mode_t ownerOnly = 0600;
    const QString path = logFolder() + QStringLiteral("/ferrylane.log");
    return platform::appendToFile(path, platform::bytesOf(line.toUtf8()), ownerOnly);
}

} // namespace

void flLog(const QString& message)
{
    static std::mutex mutex;
    const QString text = QStringLiteral("  ") + onOneLine(message) + u'\n';

    // The time is taken under the lock, so that the lines stand in the order of their times.
    const std::lock_guard lock(mutex);
    const QString line = QDateTime::currentDateTimeUtc().toString(Qt::ISODate) + text;
    // The folder is there all but the first time, so it is looked after only when it is missed.
    if (append(line) != std::errc::no_such_file_or_directory) return;
    constexpr mode_t ownerOnly = 0700;
    if (!platform::createFolders(logFolder(), ownerOnly)) static_cast<void>(append(line));
}

} // namespace ferrylane
