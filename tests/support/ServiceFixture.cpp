#include "support/ServiceFixture.h"

#include "core/StoragePaths.h"
#include "support/TestFiles.h"

namespace support {

using namespace ferrylane;

ServiceFixture::~ServiceFixture()
{
    destroyServer();
}

void ServiceFixture::createServer(const ServiceTimes& times)
{
    server_ = std::make_unique<HTTPServer>(network_, clock_, port, times);
    const UploadReports* const uploads = &server_->uploads();
    QObject::connect(uploads, &UploadReports::started, [this](const TransferState& state) {
        told_ << QStringLiteral("started ") + state.fileName;
    });
    QObject::connect(uploads, &UploadReports::progressed, [this](const TransferState& state) {
        told_ << QStringLiteral("progress %1 %2").arg(state.fraction).arg(state.speed);
    });
    QObject::connect(uploads, &UploadReports::stored, [this](const ReceivedFile& file) {
        lastReceivedFile_ = file;
        told_ << QStringLiteral("stored ") + file.name();
    });
    QObject::connect(uploads, &UploadReports::stopped,
        [this](const QString& reason) { told_ << QStringLiteral("stopped ") + reason; });
}

void ServiceFixture::startServer(const ServiceTimes& times)
{
    const int before = logCount("Server ready on port");
    createServer(times);
    ASSERT_TRUE(waitUntilReady(before + 1));
}

bool ServiceFixture::waitUntilReady(int count)
{
    return processEventsUntil([=] { return logCount("Server ready on port") >= count; });
}

bool ServiceFixture::waitUntilTold(const QString& start) const
{
    return processEventsUntil([&] { return !told_.isEmpty() && told_.last().startsWith(start); });
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
