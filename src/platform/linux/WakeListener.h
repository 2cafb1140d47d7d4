#pragma once

#include "platform/linux/SystemBus.h"

namespace platform {

/// Listens to the login manager for WakeNotices.
class WakeListener final : public QObject {
    Q_OBJECT

public:
    WakeListener(std::function<void()> onDidWake, SystemBusAccess access);

private:
    void listen();
    // Called by its name.
    Q_SLOT void onPrepareForSleep(bool isAboutToSleep);

    std::function<void()> onDidWake_;
    SystemBus bus_;
};

} // namespace platform
