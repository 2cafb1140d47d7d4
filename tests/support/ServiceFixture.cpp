#include "support/ServiceFixture.h"

#include "core/Notifications.h"
#include "core/StoragePaths.h"
#include "support/TestFiles.h"

namespace support {

using namespace ferrylane;

ServiceFixture::ServiceFixture()
{
    for (const auto name : {FerrylaneStarted, FerrylaneProgress, FerrylaneSpeed, FerrylaneStopped,
             FerrylaneReceived}) {
        observe(name);
    }
}

ServiceFixture::~ServiceFixture()
{
    destroyServer();
}

void ServiceFixture::observe(QLatin1StringView name)
{
    observations_.push_back(center_.observe(name, [this, name](const auto& payload) {
        QString text = name;
        if (const auto* const value = std::get_if<QString>(&payload)) text += u'=' + *value;
        if (const auto* const value = std::get_if<double>(&payload)) {
            text += u'=' + QString::number(*value);
        }
        notifications_.push_back(text);
    }));
}

void ServiceFixture::createServer(const UploadTimes& times)
{
    server_ = std::make_unique<HTTPServer>(HTTPServer::Collaborators{
        .network = *network_,
        .mainQueue = mainQueue_,
        .notifications = center_,
        .clock = clock_,
        .responder = responder_,
        .advertiser = advertiser_,
        .times = times,
    });
}

void ServiceFixture::startServer(const UploadTimes& times)
{
    const int before = logCount("Server ready on port");
    createServer(times);
    ASSERT_TRUE(waitUntilReady(before + 1));
}

void ServiceFixture::destroyServer()
{
    server_ = nullptr;
}

bool ServiceFixture::waitUntilReady(int count)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (logCount("Server ready on port") < count) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

QString ServiceFixture::received(const QString& name)
{
    return receiveDir() + u'/' + name;
}

QStringList ServiceFixture::receivedItems()
{
    return everythingIn(receiveDir());
}

int ServiceFixture::logCount(const QByteArray& text)
{
    const auto lines = contentOf(logFolder() + QStringLiteral("/ferrylane.log")).split('\n');
    return static_cast<int>(std::count_if(
        lines.begin(), lines.end(), [&](const QByteArray& line) { return line.contains(text); }));
}

} // namespace support
