#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace ferrylane {

/// A file that was received or sent. What is not said has these defaults.
struct FerrylaneTransferLogEntry {
    QDateTime date{};    ///< when it was appended
    QString direction{}; ///< "Received" or "Sent"
    QString fileName{};
    QString peer{}; ///< the paired phone's name when sending, else empty
    QString result = QStringLiteral("Completed"); ///< or "Failed"
    std::optional<qint64> size = std::nullopt;    ///< bytes, where known

    bool operator==(const FerrylaneTransferLogEntry&) const = default;
};

/// How many entries the log keeps unless the setting for a continuous log is on.
inline constexpr qsizetype keptTransferLogEntries = 100;

// The transfer log is a JSON file, read and written as a whole. It may be read from any thread;
// changes are for one thread at a time, that of the TransferLogKeeper. Errors are only logged: a
// log that cannot be written stays as it was.

/// The path of the log's file; its folder is created when missing.
[[nodiscard]] QString ferrylaneTransferLogURL();

/// Oldest first. Empty when the file is missing or any part of it is not as it should be.
[[nodiscard]] QList<FerrylaneTransferLogEntry> loadFerrylaneTransferLog();

void saveFerrylaneTransferLog(const QList<FerrylaneTransferLogEntry>& entries);

/// Appends the entries and drops the oldest beyond what is kept. A file that is no log is kept
/// under another name (see setAside()) and a new log begun; one that cannot be read now stays,
/// without the entries.
void appendFerrylaneTransferLog(const QList<FerrylaneTransferLogEntry>& newEntries);

/// Drops all but the newest entries that are kept, whatever the setting says.
void trimFerrylaneTransferLog();

/// The log's file content: a JSON array of objects, written compactly. An entry's date is the
/// number of seconds, with fraction, since 2001-01-01 00:00:00 UTC; its size is left out when
/// unknown.
[[nodiscard]] QByteArray transferLogJson(const QList<FerrylaneTransferLogEntry>& entries);

/// None unless the whole is JSON (RFC 8259) and each element has all that an entry needs, in the
/// right types. Members that an entry does not have are ignored; a size of null is none. A date out
/// of QDateTime's reach is not one.
[[nodiscard]] std::optional<QList<FerrylaneTransferLogEntry>> parseTransferLogJson(
    const QByteArray& json);

/// For people to read: a line an entry, newest first, times in local time, or one line that there
/// are none. File and peer names come from others, and each part is as textForWindow() has it.
[[nodiscard]] QStringList ferrylaneTransferLogLines(
    const QList<FerrylaneTransferLogEntry>& entries);

} // namespace ferrylane

// So that a growing list of many is not copied.
Q_DECLARE_TYPEINFO(ferrylane::FerrylaneTransferLogEntry, Q_RELOCATABLE_TYPE);
