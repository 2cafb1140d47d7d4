#include "platform/Relaunch.h"

#include <QCoreApplication>
#include <QProcess>

namespace platform {

std::optional<QString> relaunchSoon()
{
    QProcess shell;
    shell.setProgram(QStringLiteral("/bin/sh"));
    shell.setArguments({QStringLiteral("-c"), QStringLiteral("sleep 0.6; exec \"$1\""),
        QStringLiteral("ferrylane-restart"), QCoreApplication::applicationFilePath()});
    if (shell.startDetached()) return std::nullopt;
    return shell.errorString();
}

} // namespace platform
