#include "phone/UploadCommand.h"

#include "core/Base64Url.h"
#include "core/Text.h"
#include "phone/Failure.h"
#include "phone/Identify.h"
#include "phone/Output.h"
#include "phone/UploadProgress.h"
#include "platform/HostName.h"
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
    if (error.code() < SendError::invalidKey) return ExitCode::refused; // another HTTP status
    if (error.code() == SendError::noFileSize) return ExitCode::localFile;
    return ExitCode::noConnection;
}

class Upload {
public:
    Upload(const UploadArguments& arguments, const PairingLink& link, platform::TcpNetwork& network,
        const platform::Clock& clock)
        : target_{link.address.host, link.address.baseURL(), base64URLEncode(link.key.bytes())}
        , clock_(clock)
        , sender_(network, arguments.senderName.value_or(platform::localizedHostName()))
    {
        QObject::connect(&sender_, &FerrylaneV4Sender::waiting,
            [] { tell(QStringLiteral("The receiver is busy; waiting")); });
    }

    void put(const platform::FilePath& path)
    {
        const QString name = onOneLine(path.name());
        const auto start = clock_.now();
        const double speed = send(path, name);
        print(QStringLiteral("%1: stored and verified, %2 bytes in %3 s, %4")
                  .arg(name, QString::number(path.size().value_or(0)),
                      QString::number(platform::seconds(clock_.now() - start), 'f', 2),
                      speedText(speed)));
    }

private:
    /// MB/s.
    double send(const platform::FilePath& path, const QString& name)
    {
        QEventLoop loop;
        const UploadProgress bar(name);
        double speed = 0;
        FerrylaneV4Sender::Result result;
        QObject::connect(
            &sender_, &FerrylaneV4Sender::progressed, &loop, [&](const auto& progress) {
                speed = progress.speed;
                bar.advanced(progress.fraction, progress.speed);
            });
        QObject::connect(&sender_, &FerrylaneV4Sender::completed, &loop, [&](const auto& outcome) {
            result = outcome;
            loop.quit();
        });
        sender_.send({path}, target_);
        loop.exec();
        if (const auto* const error = std::get_if<SendError>(&result)) {
            throw Failure(exitCodeOf(*error), textForLog(error->description()));
        }
        return speed;
    }

    FerrylanePairedTarget target_;
    const platform::Clock& clock_;
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
