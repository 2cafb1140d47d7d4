#include "platform/linux/SystemBus.h"

#include <atomic>

namespace platform {

namespace {

QString newName()
{
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): names are the process's
    static std::atomic<int> count = 0;
    return QStringLiteral("platform.systembus.%1").arg(++count);
}

} // namespace

SystemBus::SystemBus(SystemBusAccess access, std::function<void()> onConnected)
    : access_(std::move(access)), onConnected_(std::move(onConnected)), name_(newName())
{
    retry_.setSingleShot(true);
    retry_.setInterval(std::chrono::ceil<std::chrono::milliseconds>(access_.retryInterval));
    QObject::connect(&retry_, &QTimer::timeout, this, &SystemBus::open);
}

SystemBus::~SystemBus()
{
    QDBusConnection::disconnectFromBus(name_);
}

void SystemBus::open()
{
    // A lost connection keeps its name.
    QDBusConnection::disconnectFromBus(name_);
    QDBusConnection bus = connect();
    if (!bus.isConnected()) {
        retry_.start();
        return;
    }
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
        SLOT(onDisconnected()));
    onConnected_();
}

void SystemBus::onDisconnected()
{
    retry_.start();
}

QDBusConnection SystemBus::connect() const
{
    return access_.address.isEmpty()
        ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, name_)
        : QDBusConnection::connectToBus(access_.address, name_);
}

} // namespace platform
