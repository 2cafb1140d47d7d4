#include "platform/linux/LoginManager.h"
#include "platform/linux/SystemBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

namespace platform {

class SleepInhibitor::Request {
public:
    Request(QString who, QString why, SystemBusAccess access)
        : who_(std::move(who)), why_(std::move(why)), bus_(std::move(access), [this] { ask(); })
    {
        bus_.open();
    }

    void hold()
    {
        isWanted_ = true;
        if (!call_ || call_->isFinished()) ask();
    }

    void release()
    {
        isWanted_ = false;
        // An answer that is still to come closes what it brings when nobody takes it.
        call_.reset();
        held_ = {};
    }

private:
    void ask()
    {
        // What is held outlives the bus it came by.
        if (!isWanted_ || held_.isValid()) return;
        QDBusMessage message = QDBusMessage::createMethodCall(
            loginService(), loginPath(), loginInterface(), QStringLiteral("Inhibit"));
        message << QStringLiteral("sleep") << who_ << why_ << QStringLiteral("block");
        call_ = std::make_unique<QDBusPendingCallWatcher>(bus_.connection().asyncCall(message));
        QObject::connect(call_.get(), &QDBusPendingCallWatcher::finished, call_.get(),
            [this](QDBusPendingCallWatcher* call) { take(*call); });
    }

    /// Nothing is held after a refusal.
    void take(const QDBusPendingCall& call)
    {
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = call;
        if (reply.isValid()) held_ = reply.value();
    }

    QString who_;
    QString why_;
    bool isWanted_ = false;
    /// The computer stays awake as long as this is open, in whatever process.
    QDBusUnixFileDescriptor held_;
    SystemBus bus_;
    std::unique_ptr<QDBusPendingCallWatcher> call_; ///< the latest
};

SleepInhibitor::SleepInhibitor(QString who, QString why, SystemBusAccess access)
    : request_(std::make_unique<Request>(std::move(who), std::move(why), std::move(access)))
{
}

SleepInhibitor::~SleepInhibitor() = default;

void SleepInhibitor::hold()
{
    request_->hold();
}

void SleepInhibitor::release()
{
    request_->release();
}

} // namespace platform
