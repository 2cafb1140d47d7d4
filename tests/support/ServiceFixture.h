#pragma once

#include "platform/Tcp.h"
#include "service/HTTPServer.h"
#include "support/EventLoop.h"
#include "support/ManualClock.h"
#include "support/PrivateUserFolders.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace support {

/// The receiver service in a home of its own, on real sockets, with a clock that the test runs by
/// hand.
class ServiceFixture : public ::testing::Test {
protected:
    ~ServiceFixture() override;

    void createServer(const ferrylane::ServiceTimes& times = {});
    /// Creates the service and waits for its port.
    void startServer(const ferrylane::ServiceTimes& times = {});
    void destroyServer() { server_ = nullptr; }
    /// Waits until the port has been opened for the `count`th time.
    [[nodiscard]] static bool waitUntilReady(int count);

    [[nodiscard]] ferrylane::HTTPServer& server() { return *server_; }
    [[nodiscard]] ManualClock& clock() { return clock_; }
    [[nodiscard]] platform::TcpNetwork& network() { return network_; }

    /// Path of an item in the receive folder.
    [[nodiscard]] static QString received(const QString& name);
    /// Names of what is in the receive folder, hidden items included, in alphabetical order.
    [[nodiscard]] static QStringList receivedItems();
    /// How many lines of the log hold `text`.
    [[nodiscard]] static int logCount(const QByteArray& text);

    /// What was told of uploads so far: "started photo.jpg", "progress 0.5 1.2" (MB/s), "stored
    /// photo.jpg", "stopped why".
    [[nodiscard]] const QStringList& told() const { return told_; }
    /// Waits until something was told, the latest of which begins so.
    [[nodiscard]] bool waitUntilTold(const QString& start) const;
    [[nodiscard]] const std::optional<ferrylane::ReceivedFile>& lastReceivedFile() const
    {
        return lastReceivedFile_;
    }

private:
    PrivateUserFolders folders_;
    ManualClock clock_;
    QStringList told_;
    std::optional<ferrylane::ReceivedFile> lastReceivedFile_;
    platform::TcpNetwork network_{"ferrylane.conn"};
    std::unique_ptr<ferrylane::HTTPServer> server_;
};

} // namespace support
