#include "phone/Commands.h"

#include "core/Encodings.h"
#include "core/LocalAddresses.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "pairing/ReceiverKeyStore.h"
#include "phone/BusyPhone.h"
#include "phone/Failure.h"
#include "phone/Output.h"
#include "phone/TerminalQRCode.h"
#include "platform/TerminationSignals.h"
#include "protocol/PairingLink.h"
#include "service/HTTPServer.h"

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
class ReceivingPhone final : public QObject {
public:
    ReceivingPhone(const ReceiveArguments& arguments, platform::TcpNetwork& network,
        const platform::Clock& clock)
        : port_(arguments.port), network_(network), clock_(clock)
    {
        if (arguments.busyTimes > 0) {
            busy_.emplace(network_, port_, arguments.busyTimes);
            connect(&*busy_, &BusyPhone::done, this, &ReceivingPhone::startService);
            connect(&*busy_, &BusyPhone::failed, this, &ReceivingPhone::portFailed);
        } else {
            startService();
        }
    }

    /// Runs until the program is told to end. Throws Failure.
    void run()
    {
        if (!failure_) QCoreApplication::exec();
        if (failure_) throw Failure(*failure_);
    }

private:
    void startService()
    {
        try {
            server_.emplace(network_, clock_, port_);
        } catch (const std::system_error& error) {
            end(QStringLiteral("cannot answer discovery requests: "), error.code());
            return;
        }
        connect(&*server_, &HTTPServer::socketChanged, this,
            [this](platform::Transport, const std::error_code& error) {
                if (error) portFailed(error);
            });
        connect(&server_->uploads(), &UploadReports::stored, this, [](const ReceivedFile& file) {
            print(QStringLiteral("Received %1 (%2 bytes)")
                      .arg(onOneLine(file.path), QString::number(file.size)));
        });
        connect(&server_->uploads(), &UploadReports::stopped, this,
            [](const QString& reason) { tell(QStringLiteral("Refused: ") + onOneLine(reason)); });
    }

    void portFailed(const std::error_code& error)
    {
        end(QStringLiteral("cannot open port %1: ").arg(port_), error);
    }

    void end(const QString& what, const std::error_code& error)
    {
        failure_.emplace(ExitCode::noConnection, what + QString::fromStdString(error.message()));
        QCoreApplication::quit();
    }

    const std::uint16_t port_;
    platform::TcpNetwork& network_;
    const platform::Clock& clock_;
    std::optional<Failure> failure_; ///< why this has to end
    std::optional<BusyPhone> busy_;
    std::optional<HTTPServer> server_;
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
    platform::quitOnTerminationSignals();
    showPairingCode(arguments);
    ReceivingPhone(arguments, network, clock).run();
}

} // namespace ferrylane::phone
