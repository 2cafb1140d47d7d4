#include "platform/TrayWatch.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QFileInfo>

namespace platform {

TrayWatch::TrayWatch()
{
    auto* const watcher = new QDBusServiceWatcher(QStringLiteral("org.kde.StatusNotifierWatcher"),
        QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &TrayWatch::appeared);
}

void startNoSessionBus()
{
    constexpr const char* address = "DBUS_SESSION_BUS_ADDRESS";
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!qEnvironmentVariableIsEmpty(address)) return;
    // Where libdbus looks next.
    if (!folder.isEmpty() && QFileInfo::exists(folder + QStringLiteral("/bus"))) return;
    qputenv(address, "disabled:");
}

} // namespace platform
