#pragma once

#include "platform/Tcp.h"

#include <QObject>

#include <memory>

namespace ferrylane::phone {

/// Holds a port and answers each request with 409 "BUSY", a given number of times.
class BusyPhone final : public QObject {
    Q_OBJECT

public:
    /// `network` must outlive this.
    BusyPhone(platform::TcpNetwork& network, std::uint16_t tcpPort, int times);

Q_SIGNALS:
    /// The last answer is on its way, and the port is free.
    void done();
    /// The port cannot be opened.
    void failed(const std::error_code& error);

private:
    void refuse(const std::shared_ptr<platform::TcpConnection>& connection);
    void finish();

    int timesLeft_;                                   ///< on the listener's queue
    std::unique_ptr<platform::TcpListener> listener_; ///< last: its handlers use the others
};

} // namespace ferrylane::phone
