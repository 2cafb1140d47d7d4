#include "platform/SystemSleep.h"

#include "platform/linux/BusService.h"

#include <QDBusUnixFileDescriptor>

namespace platform {

namespace {

// org.freedesktop.login1(5)
const QString loginService = QStringLiteral("org.freedesktop.login1");
const QString loginPath = QStringLiteral("/org/freedesktop/login1");
const QString loginManager = QStringLiteral("org.freedesktop.login1.Manager");

} // namespace

struct SystemSleep::Hold {
    bool isAskedFor = false;
    /// The computer stays awake as long as this is open, in whatever process. It outlives the bus
    /// that it came by.
    QDBusUnixFileDescriptor held;
};

SystemSleep::SystemSleep(QString who, QString why, SystemBusAccess access)
    : who_(std::move(who))
    , why_(std::move(why))
    , login_(
          std::make_unique<BusService>(loginService, QStringList{loginManager}, std::move(access)))
{
    connect(login_.get(), &BusService::appeared, this, &SystemSleep::ask);
    connect(login_.get(), &BusService::lost, this, [this] {
        if (hold_) hold_->isAskedFor = false;
    });
    connect(login_.get(), &BusService::signalled, this, [this](const QDBusMessage& signal) {
        const bool isAboutToSleep = signal.arguments().value(0, true).toBool();
        if (signal.member() == u"PrepareForSleep" && !isAboutToSleep) Q_EMIT didWake();
    });
    login_->open();
}

SystemSleep::~SystemSleep() = default;

void SystemSleep::inhibit()
{
    if (!hold_) hold_ = std::make_unique<Hold>();
    ask();
}

void SystemSleep::release()
{
    hold_.reset();
}

void SystemSleep::ask()
{
    if (!login_->isThere() || !hold_ || hold_->isAskedFor || hold_->held.isValid()) return;
    hold_->isAskedFor = true;
    QDBusMessage inhibit = login_->method(loginPath, loginManager, QStringLiteral("Inhibit"));
    inhibit << QStringLiteral("sleep") << who_ << why_ << QStringLiteral("block");
    // An answer that nobody takes closes what it brings.
    login_->call(inhibit, [this, hold = hold_.get()](const QDBusMessage& reply) {
        if (hold_.get() != hold) return;
        hold_->isAskedFor = false;
        hold_->held = reply.arguments().value(0).value<QDBusUnixFileDescriptor>();
    });
}

} // namespace platform
