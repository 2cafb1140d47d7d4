#include "phone/Commands.h"

#include "core/Service.h"
#include "core/Text.h"
#include "discovery/UdpScanner.h"
#include "phone/Failure.h"
#include "phone/Output.h"
#include "platform/ServiceBrowser.h"

#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace ferrylane::phone {

namespace {

/// The names that DNS-SD has told by now.
class Advertised {
public:
    Advertised()
    {
        browser_->start(
            dnsSdServiceType,
            [this](const QStringList& names) {
                const std::lock_guard lock(mutex_);
                names_ = names;
            },
            [](const QString& reason) { tell(QStringLiteral("No DNS-SD: ") + reason); });
    }

    [[nodiscard]] QStringList names()
    {
        const std::lock_guard lock(mutex_);
        return names_;
    }

private:
    std::mutex mutex_;
    QStringList names_;
    std::unique_ptr<platform::ServiceBrowser> browser_ = platform::ServiceBrowser::create();
};

/// Name and address of each device that answers within the time.
std::set<std::pair<QString, QString>> scan(
    const std::chrono::seconds& time, const platform::Clock& clock)
{
    std::set<std::pair<QString, QString>> found;
    UdpScanner scanner(clock);
    const auto end = clock.now() + time;
    while (clock.now() < end) {
        const auto take = [&](const DiscoveryReply& reply, const platform::Endpoint& source) {
            const QString tcpPort = reply.tcpPort ? QString::number(*reply.tcpPort) : QString();
            found.emplace(reply.name, source.addressText() + u':' + tcpPort);
        };
        if (scanner.scan(take, {}) == UdpScanner::Outcome::notAsked) {
            std::this_thread::sleep_for(UdpScanner::silence);
        }
    }
    return found;
}

} // namespace

void discover(const DiscoverArguments& arguments, const platform::Clock& clock)
{
    Advertised advertised;
    const auto answered = scan(arguments.time, clock);
    const QStringList names = advertised.names();
    for (const auto& [name, address] : answered) {
        print(QStringLiteral("%1  %2  (UDP)").arg(onOneLine(name), address));
    }
    for (const QString& name : names) {
        print(QStringLiteral("%1  (DNS-SD)").arg(onOneLine(name)));
    }
    if (answered.empty() && names.isEmpty()) {
        throw Failure(ExitCode::noConnection, QStringLiteral("nobody found"));
    }
}

} // namespace ferrylane::phone
