#include "platform/linux/WakeListener.h"

#include "platform/linux/LoginManager.h"

namespace platform {

WakeListener::WakeListener(std::function<void()> onDidWake, SystemBusAccess access)
    : onDidWake_(std::move(onDidWake)), bus_(std::move(access), [this] { listen(); })
{
    bus_.open();
}

void WakeListener::listen()
{
    bus_.connection().connect(loginService(), loginPath(), loginInterface(),
        QStringLiteral("PrepareForSleep"), this, SLOT(onPrepareForSleep(bool)));
}

void WakeListener::onPrepareForSleep(bool isAboutToSleep)
{
    if (!isAboutToSleep) onDidWake_();
}

WakeNotices::WakeNotices(std::function<void()> onDidWake, SystemBusAccess access)
    : listener_(std::make_unique<WakeListener>(std::move(onDidWake), std::move(access)))
{
}

WakeNotices::~WakeNotices() = default;

} // namespace platform
