#include "core/DeviceName.h"
#include "core/Log.h"
#include "core/Notifications.h"
#include "discovery/UdpResponder.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/Tcp.h"
#include "platform/TerminationSignals.h"
#include "receiver/HTTPServer.h"
#include "transferlog/TransferLog.h"

#include <QFileInfo>
#include <QGuiApplication>

#include <atomic>
#include <cstdio>
#include <optional>
#include <system_error>

namespace {

using ferrylane::HTTPServer;

/// The UDP responder, as the service drives it.
class Responder final : public HTTPServer::DiscoveryResponder {
public:
    void start() override { responder_.start(); }
    void stop() override { responder_.stop(); }
    void setVisible(bool visible) override { visible_ = visible; }

private:
    std::atomic<bool> visible_ = true;
    ferrylane::UdpResponder responder_{
        [this] { return visible_.load(); }, [] { return ferrylane::ferrylaneDeviceSuffix(); }};
};

/// Phones find this computer by UDP alone.
class NoAdvertiser final : public HTTPServer::Advertiser {
public:
    void advertise(const QString& /*name*/) override {}
    void withdraw() override {}
};

void logReceivedFile(const HTTPServer& server, platform::NotificationCenter& notifications)
{
    const auto& file = server.lastReceivedFile();
    if (!file) return;
    ferrylane::appendFerrylaneTransferLog({.direction = QStringLiteral("Received"),
                                              .fileName = QFileInfo(file->path).fileName(),
                                              .size = file->size},
        notifications);
}

int run()
{
    // In this order, so that each goes before what it uses.
    platform::MainQueue mainQueue;
    platform::NotificationCenter notifications(mainQueue);
    const platform::SteadyClock clock;
    const auto network = platform::TcpNetwork::create("ferrylane.conn");
    Responder responder;
    NoAdvertiser advertiser;
    const platform::TerminationSignals signals([] { QCoreApplication::quit(); });
    try {
        const HTTPServer server({*network, mainQueue, notifications, clock, responder, advertiser});
        const auto observation = notifications.observe(ferrylane::FerrylaneReceived,
            [&](const auto&) { logReceivedFile(server, notifications); });
        return QCoreApplication::exec();
    } catch (const std::system_error& error) {
        ferrylane::flLog(QStringLiteral("Could not start Ferrylane: ")
            + QString::fromStdString(error.code().message()));
        std::fprintf(stderr, "ferrylane: cannot start: %s\n", error.code().message().c_str());
        return 1;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Ferrylane"));
    return run();
}
