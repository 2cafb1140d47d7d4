#include "transferlog/TransferLog.h"

#include "core/Notifications.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "core/Text.h"
#include "platform/Files.h"
#include "transferlog/TransferLogJson.h"

#include <algorithm>
#include <mutex>

namespace ferrylane {

namespace {

/// A million entries or so; what is larger is no log that this program wrote.
constexpr qint64 maximumLogBytes = 256LL * 1024 * 1024;

/// Held while the log is read, changed and written, so that no change gets lost.
std::mutex& changeMutex()
{
    static std::mutex mutex;
    return mutex;
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
    return onOneLine(parts.join(QStringLiteral(" \u00B7 ")));
}

} // namespace

QString ferrylaneTransferLogURL()
{
    constexpr mode_t ownerOnly = 0700;
    static_cast<void>(platform::createFolders(applicationSupportFolder(), ownerOnly));
    return applicationSupportFolder() + QStringLiteral("/transfer-log-v1.json");
}

QList<FerrylaneTransferLogEntry> loadFerrylaneTransferLog()
{
    const auto json = platform::readFile(ferrylaneTransferLogURL(), maximumLogBytes);
    if (!json) return {};
    return parseTransferLogJson(*json).value_or(QList<FerrylaneTransferLogEntry>());
}

void saveFerrylaneTransferLog(const QList<FerrylaneTransferLogEntry>& entries)
{
    constexpr mode_t ownerOnly = 0600;
    const QByteArray json = transferLogJson(entries);
    // Only bookkeeping: the transfer itself went as it went.
    static_cast<void>(platform::writeFileAtomically(
        ferrylaneTransferLogURL(), platform::bytesOf(json), ownerOnly));
}

FerrylaneTransferLogEntry transferLogEntry(const FerrylaneTransfer& transfer)
{
    return {QDateTime::currentDateTimeUtc(), transfer.direction, transfer.fileName, transfer.peer,
        transfer.result, transfer.size};
}

void appendFerrylaneTransferLog(
    const FerrylaneTransfer& transfer, platform::NotificationCenter& notifications)
{
    appendFerrylaneTransferLog(QList{transferLogEntry(transfer)}, notifications);
}

void appendFerrylaneTransferLog(
    const QList<FerrylaneTransferLogEntry>& newEntries, platform::NotificationCenter& notifications)
{
    {
        const std::lock_guard lock(changeMutex());
        const auto entries = loadFerrylaneTransferLog() + newEntries;
        const bool continuous
            = standardDefaults().boolean(ferrylaneTransferLogContinuousKey, false);
        saveFerrylaneTransferLog(continuous ? entries : newest(entries));
    }
    notifications.post(FerrylaneTransferLogChanged);
}

void trimFerrylaneTransferLog()
{
    const std::lock_guard lock(changeMutex());
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
