#include "platform/TrayNotices.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

namespace platform {

class TrayWatch {
public:
    explicit TrayWatch(std::function<void()> onAppeared)
        : watcher_(QStringLiteral("org.kde.StatusNotifierWatcher"), QDBusConnection::sessionBus(),
            QDBusServiceWatcher::WatchForRegistration)
    {
        QObject::connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, &watcher_,
            [onAppeared = std::move(onAppeared)] { onAppeared(); });
    }

private:
    QDBusServiceWatcher watcher_;
};

TrayNotices::TrayNotices(std::function<void()> onAppeared)
    : watch_(std::make_unique<TrayWatch>(std::move(onAppeared)))
{
}

TrayNotices::~TrayNotices() = default;

} // namespace platform
