#pragma once

#include "platform/SystemBusAccess.h"

#include <QObject>

#include <memory>

namespace platform {

class BusService;

/// When the computer sleeps, by the login manager (logind) on the system's message bus. While that
/// cannot be reached nothing happens, and it is tried again; nothing here ever fails or waits.
/// Main thread.
class SystemSleep final : public QObject {
    Q_OBJECT

public:
    /// `who` is the program and `why` its reason to keep the computer awake, for people to read.
    SystemSleep(QString who, QString why, SystemBusAccess access = {});
    /// Releases.
    ~SystemSleep() override;
    SystemSleep(const SystemSleep&) = delete;
    SystemSleep& operator=(const SystemSleep&) = delete;

    /// Keeps the computer awake: neither the desktop nor the user puts it to sleep then. What could
    /// not be had is asked for again when the login manager is back, or when this is called again.
    /// Does nothing while held, or asked for.
    void inhibit();
    /// Does nothing while not held.
    void release();

Q_SIGNALS:
    /// The computer has woken up.
    void didWake();

private:
    struct Hold;
    void ask();

    QString who_;
    QString why_;
    std::unique_ptr<Hold> hold_; ///< while the computer is to stay awake
    std::unique_ptr<BusService> login_;
};

} // namespace platform
