#include "app/TransferTexts.h"

#include "core/Text.h"

#include <algorithm>

namespace ferrylane {

namespace {

/// As printf() in the C locale does it, whatever the user's.
QString fixed(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

QString percentAndSpeed(double fraction, const QString& between, double speed)
{
    return fixed(fraction * 100, 1) + u'%' + between + fixed(speed, 1) + QStringLiteral(" MB/s");
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

QString receiveStatusText(double fraction, double speed)
{
    return percentAndSpeed(fraction, QStringLiteral("  "), speed);
}

QString progressWindowText(double fraction, double speed)
{
    return percentAndSpeed(fraction, QStringLiteral("   "), speed);
}

QString progressWindowDoneText()
{
    return QStringLiteral("100.0%   Done");
}

QString sendingText(
    int fileIndex, int fileCount, const QString& fileName, double fraction, double speed)
{
    return QStringLiteral("Sending %1/%2: ").arg(fileIndex + 1).arg(fileCount) + fileName
        + QStringLiteral("  %1% \u00B7 %2 MB/s").arg(fixed(fraction * 100, 0), fixed(speed, 1));
}

QString sentText(int fileCount, const QString& targetName)
{
    return QStringLiteral("Sent ") + filesText(fileCount) + QStringLiteral(" to ") + targetName;
}

QString connectingText(const QString& targetName)
{
    return QStringLiteral("Connecting to ") + targetName + u'\u2026';
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
