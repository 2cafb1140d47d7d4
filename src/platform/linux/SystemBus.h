#pragma once

#include "platform/SystemSleep.h"

#include <QDBusConnection>
#include <QObject>
#include <QTimer>

namespace platform {

/// A connection to the system's message bus that is made again whenever it is lost. (The one that
/// Qt shares in the process stays lost.) On the thread that makes it, with its event loop.
class SystemBus final : public QObject {
    Q_OBJECT

public:
    /// `onConnected` is called each time that there is a new connection, never before open().
    SystemBus(SystemBusAccess access, std::function<void()> onConnected);
    ~SystemBus() override;
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;

    /// The first attempt; calls `onConnected` if it succeeds.
    void open();

    /// To be asked for anew for each use.
    [[nodiscard]] QDBusConnection connection() const { return QDBusConnection(name_); }

private:
    // Called by its name.
    Q_SLOT void onDisconnected();
    [[nodiscard]] QDBusConnection connect() const;

    SystemBusAccess access_;
    std::function<void()> onConnected_;
    QString name_; ///< of the connection, in this process
    QTimer retry_;
};

} // namespace platform
