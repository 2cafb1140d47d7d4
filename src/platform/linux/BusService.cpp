#include "platform/linux/BusService.h"

#include <QDBusConnection>

#include <limits>

namespace platform {

namespace {

const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString localInterface = QStringLiteral("org.freedesktop.DBus.Local");
const QString notRunning = QStringLiteral("Daemon not running");
// For as long as the bus hangs: an attempt that is given up stays in the bus's queue of callers,
// and when that is full, connecting blocks.
constexpr int unlimitedPatience = std::numeric_limits<int>::max();

QString newConnectionName()
{
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): names are the process's
    static int count = 0;
    return QStringLiteral("platform.systembus.%1").arg(++count);
}

/// Where the bus is, unless the environment says otherwise.
QString addressOfSystem()
{
    const QString usual = QStringLiteral("unix:path=/var/run/dbus/system_bus_socket");
    return qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS", usual);
}

} // namespace

BusService::BusService(QString name, QStringList interfaces, SystemBusAccess access)
    : name_(std::move(name))
    , interfaces_(std::move(interfaces))
    , access_(std::move(access))
    , connectionName_(newConnectionName())
{
    retry_.setSingleShot(true);
    retry_.setInterval(std::chrono::ceil<std::chrono::milliseconds>(access_.retryInterval));
    connect(&retry_, &QTimer::timeout, this, &BusService::connectToBus);
}

BusService::~BusService()
{
    QDBusConnection::disconnectFromPeer(connectionName_);
}

void BusService::open()
{
    if (!std::exchange(isOpen_, true)) connectToBus();
}

void BusService::connectToBus()
{
    const QString address = access_.address.isEmpty() ? addressOfSystem() : access_.address;
    const auto bus = QDBusConnection::connectToPeer(address, connectionName_);
    if (!bus.isConnected()) return fail(bus.lastError().message());
    sayHello();
}

void BusService::sayHello()
{
    QDBusConnection bus(connectionName_);
    const QString anyone;
    const QString anywhere;
    const QString anything;
    bus.connect(anyone, anywhere, localInterface, QStringLiteral("Disconnected"), this,
        SLOT(receive(QDBusMessage)));
    for (const QString& interface : interfaces_ + QStringList(busName)) {
        bus.connect(anyone, anywhere, interface, anything, this, SLOT(receive(QDBusMessage)));
    }
    const auto unheard = [](const QDBusMessage&) {};
    call(busMethod(QStringLiteral("Hello")), unheard, unlimitedPatience);
    const QString addMatch = QStringLiteral("AddMatch");
    bus.send(busMethod(addMatch,
        QStringLiteral("type='signal',sender='%1',member='NameOwnerChanged',arg0='%2'")
            .arg(busName, name_)));
    bus.send(busMethod(addMatch,
        QStringLiteral("type='signal',sender='%1',interface='%2'")
            .arg(name_, interfaces_.first())));
    call(
        busMethod(QStringLiteral("GetNameOwner"), name_),
        [this](const QDBusMessage& reply) {
            if (reply.type() == QDBusMessage::ReplyMessage) {
                setOwner(reply.arguments().value(0).toString());
            } else {
                lose(notRunning);
            }
        },
        unlimitedPatience);
}

QDBusMessage BusService::busMethod(const QString& name, const QString& argument) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        busName, QStringLiteral("/org/freedesktop/DBus"), busName, name);
    if (!argument.isEmpty()) message << argument;
    return message;
}

QDBusPendingCallWatcher* BusService::send(const QDBusMessage& message, int patience)
{
    const auto call = QDBusConnection(connectionName_).asyncCall(message, patience);
    return new QDBusPendingCallWatcher(call, calls_.get());
}

void BusService::tell(const QDBusMessage& message)
{
    if (isThere()) QDBusConnection(connectionName_).send(message);
}

void BusService::receive(const QDBusMessage& message)
{
    if (message.interface() == localInterface) {
        fail(QStringLiteral("The connection to the message bus is lost"));
    } else if (message.service() == busName) {
        const QVariantList arguments = message.arguments();
        if (arguments.size() != 3 || arguments[0] != name_) return;
        dropCalls();
        if (isThere()) lose(notRunning);
        setOwner(arguments[2].toString());
    } else if (isThere() && message.service() == owner_) {
        Q_EMIT signalled(message);
    }
}

void BusService::setOwner(const QString& owner)
{
    if (owner.isEmpty()) return;
    owner_ = owner;
    lossReason_.clear();
    Q_EMIT appeared();
}

void BusService::fail(const QString& reason)
{
    QDBusConnection::disconnectFromPeer(connectionName_);
    retry_.start();
    lose(reason);
}

void BusService::lose(const QString& reason)
{
    dropCalls();
    owner_.clear();
    lossReason_ = reason;
    Q_EMIT lost(reason);
}

// Later, for this may be what one of them has led to.
void BusService::dropCalls()
{
    std::exchange(calls_, std::make_unique<QObject>()).release()->deleteLater();
}

} // namespace platform
