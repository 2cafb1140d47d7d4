#include "app/AppDelegate.h"
#include "app/Appearance.h"
#include "camera/SystemCameras.h"
#include "core/Log.h"
#include "platform/MainQueue.h"
#include "platform/NetworkPathMonitor.h"
#include "platform/NotificationCenter.h"
#include "platform/SingleInstance.h"
#include "platform/SystemSleep.h"
#include "platform/Tcp.h"
#include "platform/TerminationSignals.h"
#include "platform/ThreadQueue.h"
#include "platform/TrayNotices.h"

#include <QApplication>

#include <cstdio>
#include <memory>
#include <optional>
#include <system_error>

namespace {

using ferrylane::AppDelegate;
using ferrylane::flLog;

/// Without one, a network that changes is not noticed.
std::unique_ptr<platform::NetworkPathMonitor> watchNetworkPath(
    AppDelegate& application, platform::SerialQueue& mainQueue)
{
    try {
        return std::make_unique<platform::NetworkPathMonitor>(
            "ferrylane.network.path", [&](bool isSatisfied) {
                if (!isSatisfied) return;
                mainQueue.async([&application] { application.networkPathSatisfied(); });
            });
    } catch (const std::system_error& error) {
        flLog(QStringLiteral("Could not watch the network: ")
            + QString::fromStdString(error.code().message()));
        return nullptr;
    }
}

/// The event loop of the one instance, and all that lives as long as it does.
int run(platform::SingleInstance* instance, const QByteArray& action)
{
    // In this order, so that each goes before what it uses.
    platform::MainQueue mainQueue;
    platform::NotificationCenter notifications(mainQueue);
    const platform::SteadyClock clock;
    const auto network = platform::TcpNetwork::create("ferrylane.conn");
    platform::SleepInhibitor inhibitor(
        QStringLiteral("Ferrylane"), QStringLiteral("Files are being transferred"));
    platform::ThreadQueue visionQueue("ferrylane.qr.vision");
    ferrylane::SystemCameras cameras;
    AppDelegate application(
        {*network, mainQueue, notifications, visionQueue, clock, cameras, [&](bool isNeeded) {
             if (isNeeded) {
                 inhibitor.hold();
             } else {
                 inhibitor.release();
             }
         }});
    const platform::TerminationSignals signals([] { QCoreApplication::quit(); });
    application.applicationDidFinishLaunching();

    const auto pathMonitor = watchNetworkPath(application, mainQueue);
    const platform::WakeNotices wakeNotices([&] { application.systemDidWake(); });
    const platform::TrayNotices trayNotices([&] { application.trayDidAppear(); });
    if (instance) {
        instance->setRequestHandler(
            [&](const QByteArray& request) { application.perform(request); });
    }
    // The panel shows already.
    if (action != "show") mainQueue.async([&] { application.perform(action); });
    return QApplication::exec();
}

constexpr qsizetype longestAction = 64;

/// What a launcher has been asked for; see the actions of the desktop file.
QByteArray actionOf(const QStringList& arguments)
{
    const QString prefix = QStringLiteral("--action=");
    for (const QString& argument : arguments) {
        const QByteArray action = argument.mid(prefix.size()).toUtf8();
        if (argument.startsWith(prefix) && !action.isEmpty()) return action.left(longestAction);
    }
    return QByteArrayLiteral("show");
}

/// Without a folder for its claim the program runs all the same, unguarded.
std::unique_ptr<platform::SingleInstance> claimSingleInstance(const QByteArray& action)
{
    try {
        return std::make_unique<platform::SingleInstance>(QStringLiteral("ferrylane"), action);
    } catch (const std::system_error& error) {
        flLog(QStringLiteral("Could not look for another instance: ")
            + QString::fromStdString(error.code().message()));
        return nullptr;
    }
}

/// Where nobody can see windows, phones are served all the same.
void doWithoutDisplay()
{
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(name)) return;
    }
    std::fputs("ferrylane: there is no display; running without visible windows\n", stderr);
    qputenv("QT_QPA_PLATFORM", "offscreen");
}

} // namespace

int main(int argc, char** argv)
{
    using Outcome = platform::SingleInstance::Outcome;

    doWithoutDisplay();
    const QApplication toolkit(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Ferrylane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(FERRYLANE_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("ferrylane"));
    const QByteArray action = actionOf(QCoreApplication::arguments());
    const auto instance = claimSingleInstance(action);
    const Outcome outcome = instance ? instance->outcome() : Outcome::first;
    if (outcome == Outcome::handedOver) return 0;
    if (outcome == Outcome::unanswered) {
        std::fputs("ferrylane: already running, but it does not answer\n", stderr);
        return 1;
    }
    QApplication::setQuitOnLastWindowClosed(false);
    ferrylane::useLightAppearance();
    return run(instance.get(), action);
}
