#pragma once

#include "platform/NotificationCenter.h"

#include <functional>
#include <vector>

namespace ferrylane {

/// Keeps the computer awake while files are received, which it learns from the receiver's
/// notifications, or sent. On the main thread.
class KeepAwake {
public:
    /// `setAwake` is called with true when the first of the two begins and with false when the last
    /// has ended. `notifications` must outlive this.
    KeepAwake(platform::NotificationCenter& notifications, std::function<void(bool)> setAwake);

    void setSending(bool isSending);

private:
    void setReceiving(bool isReceiving);
    void update();

    std::function<void(bool)> setAwake_;
    bool isSending_ = false;
    bool isReceiving_ = false;
    bool isAwake_ = false;
    std::vector<platform::NotificationCenter::Observation> observations_;
};

} // namespace ferrylane
