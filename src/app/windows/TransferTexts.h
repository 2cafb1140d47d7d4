#pragma once

#include "core/TransferState.h"
#include "transferlog/TransferLog.h"

#include <QString>

#include <array>

namespace ferrylane {

// What the windows say of transfers.

/// The title of the status item when nothing runs: before and after the first received file.
[[nodiscard]] QString idleTitle();
[[nodiscard]] QString receivedTitle(qint64 count);
/// While a file is being received.
[[nodiscard]] QString receivingTitle();

/// "42.0%  3.1 MB/s", for the main panel.
[[nodiscard]] QString receiveStatusText(const TransferState& state);
/// The same with three blanks, for the progress window, and what that says in the end.
[[nodiscard]] QString progressWindowText(const TransferState& state);
[[nodiscard]] QString progressWindowDoneText();

/// How sending gets on: "Connecting to Pixel 8…", "Sending 2/3: IMG_0042.jpg  57% · 4.2 MB/s",
/// "Sent 3 files to Pixel 8", "Send failed: " and why, and so on.
[[nodiscard]] QString sendStatusText(const TransferState& state);

/// A row of the recent transfers: a transfer, or the place of one that there is not yet.
struct HistoryRow {
    QString text;
    bool isPlaceholder = true;

    bool operator==(const HistoryRow&) const = default;
};
inline constexpr std::size_t historyRowCount = 3;

/// "14:05  Received  photo.jpg · 1.2 MB"; without the size where it is not known.
[[nodiscard]] QString historyText(const FerrylaneTransferLogEntry& entry);
/// The newest transfers, the newest first. `entries` are the log's, the oldest first.
[[nodiscard]] std::array<HistoryRow, historyRowCount> historyRows(
    const QList<FerrylaneTransferLogEntry>& entries);

} // namespace ferrylane
