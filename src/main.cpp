#include "core/Log.h"
#include "core/Notifications.h"
#include "discovery/FerrylaneDeviceDiscovery.h"
#include "pairing/PairedTargets.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/Tcp.h"
#include "platform/TerminationSignals.h"
#include "receiver/HTTPServer.h"
#include "service/NetworkPresence.h"
#include "transferlog/TransferLog.h"

#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>
#include <optional>
#include <system_error>

namespace {

using ferrylane::HTTPServer;

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
    ferrylane::NetworkPresence presence;
    ferrylane::FerrylaneDeviceDiscovery discovery(
        ferrylane::FerrylaneDeviceDiscovery::Parts::ofSystem(mainQueue, clock));
    // A phone that has moved to another address is found there.
    discovery.setOnAddress(ferrylane::refreshFerrylanePairedTargetAddress);
    const platform::TerminationSignals signals([] { QCoreApplication::quit(); });
    try {
        const HTTPServer server({*network, mainQueue, notifications, clock, presence, presence});
        const auto observation = notifications.observe(ferrylane::FerrylaneReceived,
            [&](const auto&) { logReceivedFile(server, notifications); });
        discovery.start();
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
