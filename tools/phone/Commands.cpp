#include "phone/Commands.h"

#include "core/Service.h"
#include "core/Text.h"
#include "pairing/ReceiverKeyStore.h"
#include "phone/Failure.h"
#include "phone/FileUpload.h"
#include "phone/HttpExchange.h"
#include "phone/Identify.h"
#include "phone/UploadProgress.h"
#include "platform/Files.h"
#include "platform/HostName.h"

#include <cstdio>

namespace ferrylane::phone {

namespace {

void print(const QString& line)
{
    std::printf("%s\n", line.toUtf8().constData());
    // Each line is out before the next file begins, also in a pipe.
    std::fflush(stdout);
}

/// The computer's words, on one line: they must not steer the terminal.
QString printable(const QByteArray& text)
{
    return onOneLine(QString::fromUtf8(text));
}

/// This user's own receiver. Its key is only read: creating one is the receiver's business.
PairingLink localLink()
{
    const QString path = ferrylaneKeyURL();
    auto bytes = platform::readFile(path, platform::SecretKey::length);
    auto key = bytes ? platform::SecretKey::fromBytes(platform::bytesOf(*bytes)) : std::nullopt;
    if (!key) {
        throw Failure(ExitCode::localFile,
            QStringLiteral("%1 holds no receiver key; start ferrylane once to create it")
                .arg(path));
    }
    return {QStringLiteral("127.0.0.1"), port, std::move(*key)};
}

PairingLink linkOf(const Arguments& arguments)
{
    if (!arguments.link) return localLink();
    auto link = parsePairingLink(*arguments.link);
    if (!link) {
        throw Failure(ExitCode::usage,
            QStringLiteral("This is not a pairing link (http://HOST:PORT/?flkey=KEY)"));
    }
    return std::move(*link);
}

Failure busy()
{
    return {ExitCode::busy, QStringLiteral("the computer is busy with another transfer")};
}

Failure refused(const QString& what, const HttpResponse& answer)
{
    return {ExitCode::refused,
        QStringLiteral("%1: %2: %3")
            .arg(what, printable(answer.statusText), printable(answer.body))};
}

void checkReady(platform::TcpNetwork& network, const PairingLink& link)
{
    const HttpResponse answer = get(network, link, "/transfer-status");
    if (answer.status == 409) throw busy();
    if (answer.status != 200) throw refused(QStringLiteral("/transfer-status"), answer);
}

class Upload {
public:
    Upload(const Arguments& arguments, platform::TcpNetwork& network, const platform::Clock& clock)
        : link_(linkOf(arguments))
        , senderName_(arguments.senderName.value_or(platform::localizedHostName()))
        , skipsIdentify_(arguments.skipsIdentify)
        , network_(network)
        , clock_(clock)
    {
    }

    void put(const QString& path)
    {
        SourceFile file(path);
        checkReady(network_, link_);
        if (!skipsIdentify_) (void)identify(network_, link_);
        send(file);
    }

private:
    void send(SourceFile& file)
    {
        const QString name = onOneLine(file.name());
        HttpResponse answer;
        platform::Duration elapsed{};
        {
            UploadProgress progress(name, file.size(), clock_);
            answer = uploadFile(network_, link_, file, senderName_,
                [&progress](qint64 done) { progress.advanced(done); });
            elapsed = progress.elapsed();
        }
        if (answer.status == 409) throw busy();
        if (answer.status != 200) throw refused(name, answer);
        print(QStringLiteral("%1: %2, %3 bytes in %4 s, %5")
                  .arg(name, printable(answer.body), QString::number(file.size()),
                      QString::number(platform::seconds(elapsed), 'f', 2),
                      speedText(file.size(), elapsed)));
    }

    PairingLink link_;
    QString senderName_;
    bool skipsIdentify_;
    platform::TcpNetwork& network_;
    const platform::Clock& clock_;
};

} // namespace

void run(const Arguments& arguments, platform::TcpNetwork& network, const platform::Clock& clock)
{
    switch (arguments.command) {
    case Arguments::Command::identify:
        print(onOneLine(identify(network, linkOf(arguments))));
        return;
    case Arguments::Command::upload:
        Upload upload(arguments, network, clock);
        for (const QString& path : arguments.files) {
            upload.put(path);
        }
    }
}

} // namespace ferrylane::phone
