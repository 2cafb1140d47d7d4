#pragma once

#include "platform/SerialQueue.h"
#include "platform/Tcp.h"

#include <functional>
#include <memory>

namespace ferrylane::phone {

/// Holds a port and answers each request with 409 "BUSY", a given number of times.
class BusyPhone {
public:
    /// One of them is called, once, on `mainQueue`.
    struct Handlers {
        std::function<void()> onDone; ///< the last answer is on its way, and the port is free
        std::function<void(const std::error_code&)> onFailure; ///< the port cannot be opened
    };

    /// Both references must outlive this.
    BusyPhone(platform::TcpNetwork& network, platform::SerialQueue& mainQueue,
        std::uint16_t tcpPort, int times, Handlers handlers);

private:
    void refuse(const std::shared_ptr<platform::TcpConnection>& connection);
    void finish();

    platform::SerialQueue& mainQueue_;
    int timesLeft_; ///< on the listener's queue
    Handlers handlers_;
    std::unique_ptr<platform::TcpListener> listener_; ///< last: its handlers use the others
};

} // namespace ferrylane::phone
