#include "platform/HostName.h"

#include "platform/Files.h"

#include <QRegularExpression>
#include <QSysInfo>

namespace platform {

namespace {

/// A shell's right-hand side without its quotes and escapes; empty when it is not quoted well.
QString unquoted(QString value)
{
    const QChar quote = value.startsWith(u'"') || value.startsWith(u'\'') ? value.front() : QChar();
    if (!quote.isNull()) {
        if (value.size() < 2 || value.back() != quote) return {};
        value = value.sliced(1, value.size() - 2);
    }
    static const QRegularExpression escape(QStringLiteral("\\\\([\"\\\\$`])"));
    return quote == u'\'' ? value : value.replace(escape, QStringLiteral("\\1"));
}

} // namespace

QString localizedHostName(const QByteArray& machineInfo, const QString& hostName)
{
    static const QRegularExpression assignment(
        QStringLiteral("^\\s*PRETTY_HOSTNAME=(.*)$"), QRegularExpression::MultilineOption);
    QString pretty;
    if (machineInfo.isValidUtf8()) {
        pretty = assignment.match(QString::fromUtf8(machineInfo)).captured(1).trimmed();
    }
    pretty = unquoted(pretty).trimmed();
    return pretty.isEmpty() ? hostName.section(u'.', 0, 0) : pretty;
}

QString localizedHostName()
{
    constexpr qint64 maximumBytes = 65536;
    const auto machineInfo = readFile(QStringLiteral("/etc/machine-info"), maximumBytes);
    return localizedHostName(machineInfo.value_or(QByteArray()), QSysInfo::machineHostName());
}

} // namespace platform
