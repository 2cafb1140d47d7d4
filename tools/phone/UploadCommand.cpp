#include "core/Encodings.h"
#include "core/Text.h"
#include "phone/Commands.h"
#include "phone/Failure.h"
#include "phone/Identify.h"
#include "phone/Output.h"
#include "platform/HostName.h"
#include "sender/FerrylaneV4Sender.h"

#include <QEventLoop>

#include <unistd.h>

namespace ferrylane::phone {

namespace {

constexpr int busyStatus = 409;

constexpr int barCells = 30;
constexpr int nameColumns = 28;

constexpr const char* clearLine = "\r\033[K";

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

/// "12.3 MB/s", with 1 MB = 1,000,000 bytes.
QString speedText(double megabytesPerSecond)
{
    return QStringLiteral("%1 MB/s").arg(megabytesPerSecond, 0, 'f', 1);
}

/// Draws a line over the one before, on the standard error output: name, bar, share, speed.
void drawProgress(const QString& name, const FerrylaneV4Sender::Progress& progress)
{
    const auto full = static_cast<int>(progress.fraction * barCells);
    const QString line
        = QStringLiteral("%1 [%2] %3%  %4")
              .arg(name.left(nameColumns), QString(full, u'#') + QString(barCells - full, u'-'),
                  QString::number(static_cast<int>(progress.fraction * 100)),
                  speedText(progress.speed));
    std::fprintf(stderr, "%s%s", clearLine, line.toUtf8().constData());
}

/// Sends the file and prints that it has been stored.
void put(
    FerrylaneV4Sender& sender, const FerrylanePairedTarget& target, const platform::FilePath& path)
{
    const QString name = onOneLine(path.name());
    const bool isTerminal = isatty(STDERR_FILENO) == 1;
    double speed = 0;
    FerrylaneV4Sender::Result result;
    QEventLoop loop;
    QObject::connect(&sender, &FerrylaneV4Sender::progressed, &loop, [&](const auto& progress) {
        speed = progress.speed;
        if (isTerminal) drawProgress(name, progress);
    });
    QObject::connect(&sender, &FerrylaneV4Sender::completed, &loop, [&](const auto& outcome) {
        result = outcome;
        loop.quit();
    });
    const platform::SteadyClock clock;
    const auto start = clock.now();
    sender.send({path}, target);
    loop.exec();
    if (isTerminal) std::fputs(clearLine, stderr);
    if (const auto* const error = std::get_if<SendError>(&result)) {
        throw Failure(exitCodeOf(*error), textForLog(error->description()));
    }
    print(
        QStringLiteral("%1: stored and verified, %2 bytes in %3 s, %4")
            .arg(name, QString::number(path.size().value_or(0)),
                QString::number(platform::seconds(clock.now() - start), 'f', 2), speedText(speed)));
}

} // namespace

void upload(const UploadArguments& arguments, const PairingLink& link)
{
    const FerrylanePairedTarget target{
        link.address.host, link.address.baseURL(), base64URLEncode(link.key.bytes())};
    FerrylaneV4Sender sender(arguments.senderName.value_or(platform::localizedHostName()));
    QObject::connect(&sender, &FerrylaneV4Sender::waiting,
        [] { tell(QStringLiteral("The receiver is busy; waiting")); });
    for (const platform::FilePath& path : arguments.files) {
        if (!arguments.skipsIdentify) static_cast<void>(identify(link));
        put(sender, target, path);
    }
}

} // namespace ferrylane::phone
