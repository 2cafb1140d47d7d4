#include "app/windows/InfoTexts.h"

#include "core/Text.h"
#include "transferlog/TransferLog.h"

#include <QCoreApplication>
#include <QSysInfo>
#include <QUrl>

#include <algorithm>
#include <limits>

namespace ferrylane {

namespace {

QString encoded(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

} // namespace

QString versionText()
{
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? QStringLiteral("unknown") : version;
}

QString transferSummary(const QList<FerrylaneTransferLogEntry>& entries)
{
    qint64 sum = 0;
    for (const FerrylaneTransferLogEntry& entry : entries) {
        // A damaged log may say anything.
        const qint64 size = std::max(entry.size.value_or(0), qint64(0));
        sum += std::min(size, std::numeric_limits<qint64>::max() - sum);
    }
    return QStringLiteral("%1 \u00B7 %2").arg(QString::number(entries.size()), fileSizeText(sum));
}

QString feedbackDetails(qsizetype loggedTransfers)
{
    return QStringLiteral("\n\nFerrylane %1\n%2\nTransfers logged: %3")
        .arg(versionText(), QSysInfo::prettyProductName(), QString::number(loggedTransfers));
}

QString feedbackLink(const QString& body)
{
    return QStringLiteral("mailto:%1?subject=%2&body=%3")
        .arg(maker::supportAddress, encoded(QStringLiteral("Ferrylane feedback")), encoded(body));
}

} // namespace ferrylane
