#include "core/Log.h"

#include "core/StoragePaths.h"
#include "core/Text.h"

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
    if (std::exchange(preparedFolder, logFolder()) != logFolder()) {
        static_cast<void>(prepareOwnFolder(logFolder()));
    }
    platform::WriteResult result = append(line);
    if (result.failure == std::errc::no_such_file_or_directory) {
        static_cast<void>(prepareOwnFolder(logFolder()));
        result = append(line);
    }
    if (!result.modeError) return;
    static_cast<void>(append(dated(QStringLiteral("  Could not close the log to others: ")
        + QString::fromStdString(result.modeError.message()))));
}

void flLog(const QString& what, const std::error_code& why)
{
    flLog(what + QStringLiteral(": ") + QString::fromStdString(why.message()));
}

} // namespace ferrylane
