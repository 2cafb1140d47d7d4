#include "core/Service.h"
#include "core/Text.h"
#include "pairing/ReceiverKeyStore.h"
#include "phone/Commands.h"
#include "phone/Failure.h"
#include "phone/Identify.h"
#include "phone/Output.h"
#include "platform/Files.h"

#include <QCoreApplication>
#include <QFile>
#include <QStandardPaths>

using namespace ferrylane;
using namespace ferrylane::phone;

namespace {

/// Makes the log, settings and keys of this process those of the played phone, in the folder
/// ferrylane-phone of the user's data folder, and not the ones of this computer. To be called
/// before other threads start: they read the environment.
void usePhoneFolders()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/ferrylane-phone/");
    const struct {
        const char* variable;
        const char* folder;
    } rows[]
        = {{"XDG_CONFIG_HOME", "config"}, {"XDG_STATE_HOME", "state"}, {"XDG_DATA_HOME", "data"}};
    for (const auto& row : rows) {
        qputenv(row.variable, QFile::encodeName(base + QLatin1StringView(row.folder)));
    }
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
    return {{QStringLiteral("127.0.0.1"), port}, std::move(*key)};
}

PairingLink linkOf(const std::optional<QString>& text)
{
    if (!text) return localLink();
    auto link = parsePairingLink(*text);
    if (!link) {
        throw Failure(ExitCode::usage,
            QStringLiteral("This is not a pairing link (http://HOST:PORT/?flkey=KEY)"));
    }
    return std::move(*link);
}

/// Runs each command with what it needs. The link comes from the user's own folders, all else is
/// the phone's.
class Runner {
public:
    void operator()(const Help& help) const { print(help.text.trimmed()); }

    void operator()(const IdentifyArguments& arguments) const
    {
        const PairingLink link = linkOf(arguments.link);
        usePhoneFolders();
        print(onOneLine(identify(link)));
    }

    void operator()(const UploadArguments& arguments) const
    {
        const PairingLink link = linkOf(arguments.link);
        usePhoneFolders();
        upload(arguments, link);
    }

    void operator()(const ReceiveArguments& arguments) const
    {
        usePhoneFolders();
        platform::TcpNetwork network("ferrylane.phone");
        receive(arguments, network, clock_);
    }

    void operator()(const DiscoverArguments& arguments) const { discover(arguments, clock_); }

private:
    platform::SteadyClock clock_;
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    try {
        std::visit(Runner(), parseArguments(QByteArrayList(argv, argv + argc)));
    } catch (const Failure& failure) {
        tell(QStringLiteral("ferrylane-phone: ") + QString::fromUtf8(failure.what()));
        return static_cast<int>(failure.code());
    } catch (const std::exception& failure) {
        tell(QStringLiteral("ferrylane-phone: ") + QString::fromLocal8Bit(failure.what()));
        return static_cast<int>(ExitCode::noConnection);
    }
    return static_cast<int>(ExitCode::ok);
}
