#include "phone/Commands.h"

#include "core/Service.h"
#include "core/Text.h"
#include "pairing/ReceiverKeyStore.h"
#include "phone/DiscoverCommand.h"
#include "phone/Failure.h"
#include "phone/Identify.h"
#include "phone/Output.h"
#include "phone/PhoneFolders.h"
#include "phone/ReceiveCommand.h"
#include "phone/UploadCommand.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Tcp.h"

namespace ferrylane::phone {

namespace {

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
        print(onOneLine(identify(*network(), link)));
    }

    void operator()(const UploadArguments& arguments) const
    {
        const PairingLink link = linkOf(arguments.link);
        usePhoneFolders();
        upload(arguments, link, *network(), clock_);
    }

    void operator()(const ReceiveArguments& arguments) const
    {
        usePhoneFolders();
        receive(arguments, *network(), clock_);
    }

    void operator()(const DiscoverArguments& arguments) const { discover(arguments, clock_); }

private:
    [[nodiscard]] static std::unique_ptr<platform::TcpNetwork> network()
    {
        return platform::TcpNetwork::create("ferrylane.phone");
    }

    platform::SteadyClock clock_;
};

} // namespace

void run(const Arguments& arguments)
{
    std::visit(Runner(), arguments);
}

} // namespace ferrylane::phone
