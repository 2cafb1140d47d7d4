#include "phone/UploadCommand.h"

#include "core/Base64Url.h"
#include "core/Text.h"
#include "phone/Failure.h"
#include "phone/Identify.h"
#include "phone/Output.h"
#include "phone/UploadProgress.h"
#include "platform/HostName.h"
#include "platform/MainQueue.h"
#include "sender/FerrylaneV4Sender.h"

#include <QEventLoop>

namespace ferrylane::phone {

namespace {

constexpr int busyStatus = 409;

ExitCode exitCodeOf(const SendError& error)
{
    switch (error.domain()) {
    case SendError::Domain::network:
        return ExitCode::noConnection;
    case SendError::Domain::file:
        return ExitCode::localFile;
    case SendError::Domain::ferrylane:
        break;
    }
    if (error.code() == busyStatus) return ExitCode::busy;
    if (error.code() < send_errors::firstCode) return ExitCode::refused; // another HTTP status
    if (error.code() == send_errors::noFileSize().code()) return ExitCode::localFile;
    return ExitCode::noConnection;
}

FerrylanePairedTarget targetOf(const PairingLink& link)
{
    return {link.address.host, link.address.baseURL(), base64URLEncode(link.key.bytes())};
}

class Upload {
public:
    Upload(const UploadArguments& arguments, const PairingLink& link, platform::TcpNetwork& network,
        const platform::Clock& clock)
        : target_(targetOf(link))
        , clock_(clock)
        , sender_({network, mainQueue_, clock},
              arguments.senderName.value_or(platform::localizedHostName()))
    {
        sender_.onWaiting = [] { tell(QStringLiteral("The receiver is busy; waiting")); };
    }

    void put(const platform::FilePath& path)
    {
        const QString name = onOneLine(path.name());
        const auto start = clock_.now();
        double speed = 0;
        {
            UploadProgress progress(name);
            send(path, [&](const auto& step) {
                speed = step.speed;
                progress.advanced(step.fraction, step.speed);
            });
        }
        print(QStringLiteral("%1: stored and verified, %2 bytes in %3 s, %4")
                  .arg(name, QString::number(path.size().value_or(0)),
                      QString::number(platform::seconds(clock_.now() - start), 'f', 2),
                      speedText(speed)));
    }

private:
    void send(const platform::FilePath& path, const FerrylaneV4Sender::ProgressHandler& progress)
    {
        QEventLoop loop;
        FerrylaneV4Sender::Result result;
        sender_.send({path}, target_, progress, [&](const auto& outcome) {
            result = outcome;
            loop.quit();
        });
        loop.exec();
        if (const auto* const error = std::get_if<SendError>(&result)) {
            throw Failure(exitCodeOf(*error), textForLog(error->description()));
        }
    }

    FerrylanePairedTarget target_;
    const platform::Clock& clock_;
    platform::MainQueue mainQueue_;
    FerrylaneV4Sender sender_;
};

} // namespace

void upload(const UploadArguments& arguments, const PairingLink& link,
    platform::TcpNetwork& network, const platform::Clock& clock)
{
    Upload upload(arguments, link, network, clock);
    for (const platform::FilePath& path : arguments.files) {
        if (!arguments.skipsIdentify) static_cast<void>(identify(network, link));
        upload.put(path);
    }
}

} // namespace ferrylane::phone
