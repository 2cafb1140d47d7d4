#pragma once

#include "platform/Clock.h"

#include <QObject>

#include <memory>

namespace platform {

/// Watches this computer's path to others on the network. It is satisfied while an interface other
/// than the loopback one is up, has its carrier and has an IPv4 or IPv6 address; one that is valid
/// on its link only is enough to reach a neighbour.
///
/// What is not a change of the path is not told: the system speaks up for every scan of a wireless
/// interface and every router advertisement as well. Main thread.
class NetworkPathMonitor final : public QObject {
    Q_OBJECT

public:
    /// Changes that follow one another within this time are told as one, and not at all when they
    /// undo each other.
    static constexpr auto mergeInterval = std::chrono::milliseconds(50);

    /// Throws std::system_error when the system has no means left to watch with.
    NetworkPathMonitor();
    ~NetworkPathMonitor() override;
    NetworkPathMonitor(const NetworkPathMonitor&) = delete;
    NetworkPathMonitor& operator=(const NetworkPathMonitor&) = delete;

Q_SIGNALS:
    /// Once at the start, then after every change of those addresses or of the interface that leads
    /// to the rest of the world.
    void pathChanged(bool isSatisfied);

private:
    struct Watch;
    void look();

    std::unique_ptr<Watch> watch_;
};

} // namespace platform
