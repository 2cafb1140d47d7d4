#pragma once

#include "platform/Clock.h"

#include <functional>
#include <memory>
#include <string>

namespace platform {

/// Watches this computer's path to others on the network. It is satisfied while an interface other
/// than the loopback one is up, has its carrier and has an IPv4 or IPv6 address; one that is valid
/// on its link only is enough to reach a neighbour.
///
/// What is not a change of the path is not told: the system speaks up for every scan of a wireless
/// interface and every router advertisement as well.
class NetworkPathMonitor {
public:
    /// Runs on a thread of the monitor's own: once at the start, then after every change of those
    /// addresses or of the interface that leads to the rest of the world.
    using Handler = std::function<void(bool isSatisfied)>;
    /// Changes that follow one another within this time are told as one, and not at all when they
    /// undo each other.
    static constexpr Duration mergeInterval = std::chrono::milliseconds(50);

    /// `label` names the monitor's thread. Throws std::system_error when the system has no means
    /// left to watch with.
    NetworkPathMonitor(const std::string& label, Handler handler);
    /// Waits for a handler that is running: when it returns, none runs or will run. Not to be
    /// called from the handler.
    ~NetworkPathMonitor();
    NetworkPathMonitor(const NetworkPathMonitor&) = delete;
    NetworkPathMonitor& operator=(const NetworkPathMonitor&) = delete;

private:
    class Watch;
    std::unique_ptr<Watch> watch_;
};

} // namespace platform
