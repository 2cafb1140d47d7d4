#include "app/AppDelegate.h"
#include "app/widgets/Appearance.h"
#include "core/Log.h"
#include "core/Settings.h"
#include "platform/Process.h"
#include "platform/SingleInstance.h"
#include "platform/TerminationSignals.h"
#include "platform/TrayWatch.h"
#include "service/FerrylaneService.h"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <system_error>

namespace {

using ferrylane::AppDelegate;
using ferrylane::flLog;

using End = std::optional<platform::EndLimit>;

/// From here on everything ends in its order, which a busy disk may hold up.
void beginEnd(End& end, platform::SingleInstance* instance)
{
    constexpr auto longestEnd = std::chrono::seconds(20);
    if (instance) instance->sayThatItEnds();
    try {
        end.emplace(longestEnd, [] {
            flLog(QStringLiteral(
                "Ended without waiting any longer for what was still to be written"));
        });
    } catch (const std::system_error& error) {
        flLog(QStringLiteral("The end takes as long as it does"), error.code());
    }
}

/// The event loop of the one instance, and all that lives as long as it does.
int run(platform::SingleInstance* instance, const QByteArray& action, End& end)
{
    ferrylane::FerrylaneService service;
    AppDelegate application(service);
    application.applicationDidFinishLaunching();
    const platform::TrayWatch trayWatch;
    QObject::connect(
        &trayWatch, &platform::TrayWatch::appeared, &application, &AppDelegate::trayDidAppear);
    if (instance) {
        instance->setRequestHandler(
            [&](const QByteArray& request) { application.perform(request); });
    }
    // The panel shows already.
    if (action != "show") QTimer::singleShot(0, &application, [&] { application.perform(action); });
    const int status = QApplication::exec();
    beginEnd(end, instance);
    return status;
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
        flLog(QStringLiteral("Could not look for another instance"), error.code());
        return nullptr;
    }
}

/// Why the program ends as soon as it has been started.
void sayWhyNot(const QString& reason, const QString& advice)
{
    std::fprintf(stderr, "ferrylane: %s\n", qPrintable(reason));
    flLog(reason);
    if (QGuiApplication::platformName() == u"offscreen") return;
    QMessageBox::warning(nullptr, QStringLiteral("Ferrylane"), reason + u' ' + advice);
}

/// What the platform has to say of faults that it lives on with (a handler that threw).
void logFaults(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    std::fprintf(stderr, "ferrylane: %s\n", qPrintable(message));
    if (type == QtCriticalMsg || type == QtFatalMsg) flLog(message);
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

    qInstallMessageHandler(logFaults);
    platform::raiseDescriptorLimit();
    doWithoutDisplay();
    platform::startNoSessionBus();
    End end; // ends last
    const QApplication toolkit(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Ferrylane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(FERRYLANE_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("ferrylane"));
    const QByteArray action = actionOf(QCoreApplication::arguments());
    const auto instance = claimSingleInstance(action);
    const Outcome outcome = instance ? instance->outcome() : Outcome::first;
    if (outcome == Outcome::handedOver) return 0;
    if (outcome == Outcome::unanswered) {
        sayWhyNot(QStringLiteral("Ferrylane is already running, but it does not answer."),
            QStringLiteral("End it, or log out and in again, then start it anew."));
        return 1;
    }
    QApplication::setQuitOnLastWindowClosed(false);
    ferrylane::useLightAppearance();
    int exitCode = 1;
    try {
        platform::quitOnTerminationSignals();
        exitCode = run(instance.get(), action, end);
    } catch (const std::system_error& error) {
        sayWhyNot(QStringLiteral("Ferrylane cannot run: %1.")
                      .arg(QString::fromStdString(error.code().message())),
            QStringLiteral("End other programs, then start it anew."));
    }
    // Before the claim of the instance goes: the next one reads them.
    if (const std::error_code error = ferrylane::userSettings().flush()) {
        flLog(QStringLiteral("Could not save the settings"), error);
    }
    return exitCode;
}
