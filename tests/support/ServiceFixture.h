#pragma once

#include "platform/NotificationCenter.h"
#include "platform/Tcp.h"
#include "receiver/HTTPServer.h"
#include "support/ManualQueue.h"
#include "support/PrivateUserFolders.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <system_error>
#include <vector>

namespace support {

class FakeResponder final : public ferrylane::HTTPServer::DiscoveryResponder {
public:
    void start() override
    {
        if (failing) throw std::system_error(EIO, std::generic_category());
        ++starts;
        isOpen = true;
    }
    void stop() override
    {
        if (std::exchange(isOpen, false)) ++stops;
    }
    void setVisible(bool value) override { visible = value; }

    bool failing = false;
    bool isOpen = false;
    bool visible = true;
    int starts = 0;
    int stops = 0;
};

class FakeAdvertiser final : public ferrylane::HTTPServer::Advertiser {
public:
    void advertise(const QString& /*name*/) override { announced = true; }
    void withdraw() override { announced = false; }

    bool announced = false;
};

/// The receiver service in a home of its own, on real sockets, with a main queue and a clock that
/// the test runs by hand.
class ServiceFixture : public ::testing::Test {
protected:
    ServiceFixture();
    ~ServiceFixture() override;

    void createServer(const ferrylane::UploadTimes& times = {});
    /// Creates the service and waits for its port.
    void startServer(const ferrylane::UploadTimes& times = {});
    void destroyServer();
    /// Waits until the port has been opened for the `count`th time.
    [[nodiscard]] bool waitUntilReady(int count);

    [[nodiscard]] ferrylane::HTTPServer& server() { return *server_; }
    [[nodiscard]] ManualQueue& mainQueue() { return mainQueue_; }
    [[nodiscard]] ManualClock& clock() { return clock_; }
    [[nodiscard]] FakeResponder& responder() { return responder_; }
    [[nodiscard]] FakeAdvertiser& advertiser() { return advertiser_; }
    [[nodiscard]] platform::TcpNetwork& network() { return *network_; }

    /// Path of an item in the receive folder.
    [[nodiscard]] static QString received(const QString& name);
    /// Names of what is in the receive folder, hidden items included, in alphabetical order.
    [[nodiscard]] static QStringList receivedItems();
    /// How many lines of the log hold `text`.
    [[nodiscard]] static int logCount(const QByteArray& text);

    /// Notifications that have been delivered so far, as "name" or "name=value".
    [[nodiscard]] const std::vector<QString>& notifications() const { return notifications_; }

private:
    void observe(QLatin1StringView name);

    PrivateUserFolders folders_;
    ManualQueue mainQueue_;
    ManualClock clock_;
    FakeResponder responder_;
    FakeAdvertiser advertiser_;
    platform::NotificationCenter center_{mainQueue_};
    std::vector<platform::NotificationCenter::Observation> observations_;
    std::vector<QString> notifications_;
    std::unique_ptr<platform::TcpNetwork> network_ = platform::TcpNetwork::create("ferrylane.conn");
    std::unique_ptr<ferrylane::HTTPServer> server_;
};

} // namespace support
