#include "platform/Relaunch.h"

#include <QCoreApplication>
#include <QProcess>

namespace platform {

namespace {

/// After an update, the system says of the old executable that it is deleted; the new one is there.
QString executable()
{
    const QString mark = QStringLiteral(" (deleted)");
    const QString path = QCoreApplication::applicationFilePath();
    return path.endsWith(mark) ? path.chopped(mark.size()) : path;
}

} // namespace

std::optional<QString> relaunchSoon()
{
    QProcess shell;
    shell.setProgram(QStringLiteral("/bin/sh"));
    shell.setArguments({QStringLiteral("-c"), QStringLiteral("sleep 0.6; exec \"$1\""),
        QStringLiteral("ferrylane-restart"), executable()});
    if (shell.startDetached()) return std::nullopt;
    return shell.errorString();
}

} // namespace platform
