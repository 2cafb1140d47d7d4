#include "transferlog/TransferLog.h"

#include "core/Log.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "core/Text.h"

#include <algorithm>
#include <utility>

namespace ferrylane {

namespace {

/// A million entries or so; what is larger is no log that this program wrote.
constexpr qint64 maximumLogBytes = 256LL * 1024 * 1024;

struct StoredLog {
    QList<FerrylaneTransferLogEntry> entries;
    bool isDamaged = false; ///< it is there, and no log
    std::error_code error;  ///< it is there, but cannot be read now
};

StoredLog storedLog()
{
    StoredLog log;
    const auto json = platform::readFile(ferrylaneTransferLogURL(), maximumLogBytes, log.error);
    auto entries = json ? parseTransferLogJson(*json) : std::nullopt;
    if (entries) log.entries = std::move(*entries);
    log.isDamaged = (json && !entries) || log.error == std::errc::file_too_large;
    if (log.isDamaged || log.error == std::errc::no_such_file_or_directory) log.error = {};
    return log;
}

QList<FerrylaneTransferLogEntry> newest(const QList<FerrylaneTransferLogEntry>& entries)
{
    return entries.last(std::min(entries.size(), keptTransferLogEntries));
}

QString lineOf(const FerrylaneTransferLogEntry& entry)
{
    QStringList parts{entry.date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
        entry.direction, entry.fileName};
    if (!entry.peer.isEmpty()) parts << entry.peer;
    parts << entry.result;
    if (entry.size) parts << fileSizeText(*entry.size);
    std::transform(parts.begin(), parts.end(), parts.begin(), textForWindow);
    return parts.join(QStringLiteral(" \u00B7 "));
}

} // namespace

QString ferrylaneTransferLogURL()
{
    static_cast<void>(prepareOwnFolder(applicationSupportFolder()));
    return applicationSupportFolder() + QStringLiteral("/transfer-log-v1.json");
}

QList<FerrylaneTransferLogEntry> loadFerrylaneTransferLog()
{
    return storedLog().entries;
}

void saveFerrylaneTransferLog(const QList<FerrylaneTransferLogEntry>& entries)
{
    const auto error
        = writeOwnFile(ferrylaneTransferLogURL(), platform::bytesOf(transferLogJson(entries)));
    // Only bookkeeping: the transfer itself went as it went.
    if (error) {
        flLog(QStringLiteral("Could not save the transfer log"), error);
    }
}

void appendFerrylaneTransferLog(const QList<FerrylaneTransferLogEntry>& newEntries)
{
    StoredLog log = storedLog();
    if (!log.error && log.isDamaged) log.error = setAside(ferrylaneTransferLogURL());
    if (log.error) {
        // What is in it is worth more than the new entries.
        flLog(QStringLiteral("Could not read the transfer log"), log.error);
        return;
    }
    log.entries.append(newEntries);
    const bool continuous = userSettings().boolean(ferrylaneTransferLogContinuousKey, false);
    saveFerrylaneTransferLog(continuous ? log.entries : newest(log.entries));
}

void trimFerrylaneTransferLog()
{
    const auto entries = loadFerrylaneTransferLog();
    if (entries.size() > keptTransferLogEntries) saveFerrylaneTransferLog(newest(entries));
}

QStringList ferrylaneTransferLogLines(const QList<FerrylaneTransferLogEntry>& entries)
{
    if (entries.isEmpty()) return {QStringLiteral("No transfers logged yet.")};

    QStringList lines;
    lines.reserve(entries.size());
    std::transform(entries.rbegin(), entries.rend(), std::back_inserter(lines), lineOf);
    return lines;
}

} // namespace ferrylane
