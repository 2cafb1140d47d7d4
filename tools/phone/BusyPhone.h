#pragma once

#include "platform/SerialQueue.h"
#include "platform/Tcp.h"

#include <functional>
#include <memory>

namespace ferrylane::phone {

/// Holds a port and answers each request with 409 "BUSY", a given number of times.
class BusyPhone {
public:
    /// `onDone` runs on `mainQueue` once the last answer is on its way; the port is free then. Both
    /// references must outlive this.
    BusyPhone(platform::TcpNetwork& network, platform::SerialQueue& mainQueue,
        std::uint16_t tcpPort, int times, std::function<void()> onDone);

private:
    void refuse(const std::shared_ptr<platform::TcpConnection>& connection);
    void finish();

    platform::SerialQueue& mainQueue_;
    std::unique_ptr<platform::TcpListener> listener_;
    int timesLeft_; ///< on the listener's queue
    std::function<void()> onDone_;
};

} // namespace ferrylane::phone
