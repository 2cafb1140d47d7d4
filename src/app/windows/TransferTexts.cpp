#include "app/windows/TransferTexts.h"

#include "core/Text.h"

#include <algorithm>

namespace ferrylane {

namespace {

/// As printf() in the C locale does it, whatever the user's.
QString fixed(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

QString percentAndSpeed(const TransferState& state, const QString& between)
{
    return fixed(state.fraction * 100, 1) + u'%' + between + fixed(state.speed, 1)
        + QStringLiteral(" MB/s");
}

QString filesText(int count)
{
    return QString::number(count)
        + (count == 1 ? QStringLiteral(" file") : QStringLiteral(" files"));
}

} // namespace

QString idleTitle()
{
    return QStringLiteral("\u21C4");
}

QString receivedTitle(qint64 count)
{
    return idleTitle() + u' ' + QString::number(count);
}

QString receivingTitle()
{
    return idleTitle() + QStringLiteral(" \u2026");
}

QString receiveStatusText(const TransferState& state)
{
    return percentAndSpeed(state, QStringLiteral("  "));
}

QString progressWindowText(const TransferState& state)
{
    return percentAndSpeed(state, QStringLiteral("   "));
}

QString progressWindowDoneText()
{
    return QStringLiteral("100.0%   Done");
}

QString sendStatusText(const TransferState& state)
{
    using Stage = TransferState::Stage;
    switch (state.stage) {
    case Stage::none:
        return {};
    case Stage::connecting:
        return QStringLiteral("Connecting to ") + state.peer + u'\u2026';
    case Stage::waiting:
        return QStringLiteral("Device transferring \u2014 waiting until it finishes\u2026");
    case Stage::running:
        return QStringLiteral("Sending %1/%2: ").arg(state.fileIndex + 1).arg(state.fileCount)
            + state.fileName
            + QStringLiteral("  %1% \u00B7 %2 MB/s")
                  .arg(fixed(state.fraction * 100, 0), fixed(state.speed, 1));
    case Stage::completed:
        return QStringLiteral("Sent ") + filesText(state.fileCount) + QStringLiteral(" to ")
            + state.peer;
    case Stage::failed:
        // The phone's own words may be in it, of any length.
        return QStringLiteral("Send failed: ") + textForWindow(state.reason);
    case Stage::stopped:
        return QStringLiteral("Transfer stopped");
    }
    return {};
}

QString historyText(const FerrylaneTransferLogEntry& entry)
{
    const QString blanks = QStringLiteral("  ");
    const QString text = entry.date.toLocalTime().toString(QStringLiteral("HH:mm")) + blanks
        + entry.direction + blanks + entry.fileName;
    return entry.size ? text + QStringLiteral(" \u00B7 ") + fileSizeText(*entry.size) : text;
}

std::array<HistoryRow, historyRowCount> historyRows(const QList<FerrylaneTransferLogEntry>& entries)
{
    std::array<HistoryRow, historyRowCount> rows;
    rows.fill({QStringLiteral("\u2014"), true});
    const auto count = std::min(static_cast<std::size_t>(entries.size()), historyRowCount);
    for (std::size_t i = 0; i < count; ++i) {
        rows[i] = {historyText(entries[entries.size() - 1 - static_cast<qsizetype>(i)]), false};
    }
    return rows;
}

} // namespace ferrylane
