#include "phone/Commands.h"

#include "core/Service.h"
#include "core/Text.h"
#include "discovery/UdpScanner.h"
#include "phone/Failure.h"
#include "phone/Output.h"
#include "platform/DnsSd.h"

#include <QEventLoop>

#include <set>
#include <thread>

namespace ferrylane::phone {

namespace {

/// Name and address of each device that answers until `end`.
std::set<std::pair<QString, QString>> scan(platform::TimePoint end)
{
    std::set<std::pair<QString, QString>> found;
    while (platform::SteadyClock().now() < end) {
        const Scan scan = scanUDP({});
        for (const auto& [device, source, time] : scan.replies) {
            const QString tcpPort = device.tcpPort ? QString::number(*device.tcpPort) : QString();
            found.emplace(device.name, source.addressText() + u':' + tcpPort);
        }
        if (scan.outcome == Scan::Outcome::notAsked) {
            std::this_thread::sleep_for(ScanRules().silence);
        }
    }
    return found;
}

} // namespace

void discover(const DiscoverArguments& arguments, const platform::Clock& clock)
{
    QStringList names;
    platform::ServiceBrowser browser;
    QObject::connect(&browser, &platform::ServiceBrowser::namesChanged,
        [&](const QStringList& now) { names = now; });
    QObject::connect(&browser, &platform::ServiceBrowser::failed,
        [](const QString& reason) { tell(QStringLiteral("No DNS-SD: ") + reason); });
    browser.start(dnsSdServiceType);

    std::set<std::pair<QString, QString>> answered;
    QEventLoop untilScanned;
    std::thread scanning([&, end = clock.now() + arguments.time] {
        answered = scan(end);
        QMetaObject::invokeMethod(&untilScanned, &QEventLoop::quit, Qt::QueuedConnection);
    });
    untilScanned.exec();
    scanning.join();
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
