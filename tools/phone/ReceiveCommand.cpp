#include "phone/ReceiveCommand.h"

#include "core/Base64Url.h"
#include "core/LocalAddresses.h"
#include "core/Notifications.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "pairing/ReceiverKeyStore.h"
#include "phone/BusyPhone.h"
#include "phone/Failure.h"
#include "phone/Output.h"
#include "phone/TerminalQRCode.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/TerminationSignals.h"
#include "protocol/PairingLink.h"
#include "service/NetworkPresence.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <optional>
#include <system_error>

#include <unistd.h>

namespace ferrylane::phone {

namespace {

void makePhoneSettings(const ReceiveArguments& arguments)
{
    const QFileInfo folder(arguments.folder);
    if (!QDir().mkpath(folder.absoluteFilePath())
        || !QFileInfo(folder.absoluteFilePath()).isWritable()) {
        throw Failure(ExitCode::localFile,
            QStringLiteral("%1 is no folder to write to").arg(arguments.folder));
    }
    userSettings().set(ferrylaneReceiveFolderKey, folder.absoluteFilePath());
    userSettings().set(ferrylaneDeviceNameKey, arguments.name);
    userSettings().flush();
}

/// The receiver service as a phone's: on its port, telling on the terminal what becomes of uploads.
class ReceivingPhone {
public:
    ReceivingPhone(const ReceiveArguments& arguments, platform::TcpNetwork& network,
        const platform::Clock& clock)
        : arguments_(arguments), network_(network), clock_(clock), presence_(arguments.port)
    {
        if (arguments.busyTimes > 0) {
            busy_.emplace(network_, mainQueue_, arguments.port, arguments.busyTimes,
                BusyPhone::Handlers{[this] { becomeReady(); },
                    [this](const std::error_code& error) { portFailed(error); }});
        } else {
            startService();
        }
    }

    /// Runs until the program is told to end. Throws Failure.
    void run()
    {
        QCoreApplication::exec();
        if (failure_) throw Failure(*failure_);
    }

private:
    void becomeReady()
    {
        try {
            startService();
        } catch (const Failure& failure) {
            end(failure);
        }
    }

    void portFailed(const std::error_code& error)
    {
        end({ExitCode::noConnection,
            QStringLiteral("cannot open port %1: %2")
                .arg(QString::number(arguments_.port), QString::fromStdString(error.message()))});
    }

    void end(const Failure& failure)
    {
        failure_ = failure;
        QCoreApplication::quit();
    }

    void startService()
    {
        try {
            server_.emplace(HTTPServer::Collaborators{network_, mainQueue_, notifications_, clock_,
                                presence_, presence_,
                                [this](platform::Transport, const std::error_code& error) {
                                    if (error) portFailed(error);
                                }},
                arguments_.port);
        } catch (const std::system_error& error) {
            throw Failure(ExitCode::noConnection,
                QStringLiteral("cannot answer discovery requests: %1")
                    .arg(QString::fromStdString(error.code().message())));
        }
    }

    void tellOfFile()
    {
        const auto& file = server_->lastReceivedFile();
        if (!file) return;
        print(QStringLiteral("Received %1 (%2 bytes)")
                  .arg(onOneLine(QFileInfo(file->path).filePath()), QString::number(file->size)));
    }

    const ReceiveArguments& arguments_;
    platform::TcpNetwork& network_;
    const platform::Clock& clock_;
    platform::MainQueue mainQueue_;
    platform::NotificationCenter notifications_{mainQueue_};
    NetworkPresence presence_;
    std::optional<Failure> failure_; ///< why this has to end
    std::optional<BusyPhone> busy_;
    std::optional<HTTPServer> server_;
    platform::NotificationCenter::Observation received_
        = notifications_.observe(FerrylaneReceived, [this](const auto&) { tellOfFile(); });
    platform::NotificationCenter::Observation stopped_
        = notifications_.observe(FerrylaneStopped, [](const auto& reason) {
              tell(QStringLiteral("Refused: ") + onOneLine(std::get<QString>(reason)));
          });
};

void showPairingCode(const ReceiveArguments& arguments)
{
    const QString link = ferrylanePairingLink(ferrylaneLocalHostForURL(), arguments.port,
        base64URLEncode(loadOrCreateFerrylaneKey().bytes()), arguments.name);
    const auto code = platform::QRCode::ofText(link);
    if (code && isatty(STDOUT_FILENO) == 1) print(terminalText(*code));
    print(QStringLiteral("Pairing link: ") + link);
}

} // namespace

void receive(
    const ReceiveArguments& arguments, platform::TcpNetwork& network, const platform::Clock& clock)
{
    makePhoneSettings(arguments);
    const platform::TerminationSignals signals([] { QCoreApplication::quit(); });
    showPairingCode(arguments);
    ReceivingPhone(arguments, network, clock).run();
}

} // namespace ferrylane::phone
