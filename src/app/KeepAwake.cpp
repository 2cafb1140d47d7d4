#include "app/KeepAwake.h"

#include "core/Notifications.h"

#include <utility>

namespace ferrylane {

KeepAwake::KeepAwake(
    platform::NotificationCenter& notifications, std::function<void(bool)> setAwake)
    : setAwake_(std::move(setAwake))
{
    const auto observe = [&](QLatin1StringView name, bool isReceiving) {
        observations_.push_back(notifications.observe(
            name, [this, isReceiving](const auto& /*payload*/) { setReceiving(isReceiving); }));
    };
    observe(FerrylaneStarted, true);
    observe(FerrylaneReceived, false);
    observe(FerrylaneStopped, false);
}

void KeepAwake::setSending(bool isSending)
{
    isSending_ = isSending;
    update();
}

void KeepAwake::setReceiving(bool isReceiving)
{
    isReceiving_ = isReceiving;
    update();
}

void KeepAwake::update()
{
    const bool isNeeded = isSending_ || isReceiving_;
    if (std::exchange(isAwake_, isNeeded) != isNeeded) setAwake_(isNeeded);
}

} // namespace ferrylane
