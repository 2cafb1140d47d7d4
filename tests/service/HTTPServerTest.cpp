#include "service/HTTPServer.h"

#include "core/Service.h"
#include "protocol/DiscoveryProtocol.h"
#include "support/ServiceFixture.h"
#include "support/TcpClient.h"
#include "support/TestFiles.h"
#include "support/UploadStream.h"

#include <QFile>
#include <QTest>
#include <QUdpSocket>

#include <gtest/gtest.h>

#include <future>

using namespace ferrylane;
using namespace std::chrono_literals;
using support::answerTo;
using support::statusRequest;
using support::summary;
using support::TcpClient;

namespace {

using HTTPServerTest = support::ServiceFixture;

/// Takes the port of discovery for itself, as a program that shares it with nobody does.
bool takeDiscoveryPort(QUdpSocket& socket)
{
    return socket.bind(QHostAddress::AnyIPv4, discoveryPort, QUdpSocket::DontShareAddress);
}

} // namespace

TEST_F(HTTPServerTest, startingAndStoppingTwiceChangesNothing)
{
    startServer();
    server().startService();
    server().stopService();
    server().stopService();
    EXPECT_FALSE(support::isListening());
    server().startService();
    ASSERT_TRUE(waitUntilReady(2));
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
    EXPECT_EQ(logCount("Ferrylane service started"), 1);
    EXPECT_EQ(logCount("Ferrylane service stopped"), 1);
    EXPECT_EQ(logCount("UDP discovery responder ready"), 2);
}

TEST_F(HTTPServerTest, aBurstOfRebindsReopensOnce)
{
    startServer({.rebindDelay = 300ms});
    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    EXPECT_FALSE(support::isListening());
    QTest::qWait(200);
    server().rebindAfterNetworkChange(QStringLiteral("network path/IP change"));
    QTest::qWait(200);
    EXPECT_EQ(logCount("network rebind completed"), 0);
    ASSERT_TRUE(waitUntilReady(2));
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
    QTest::qWait(400);
    EXPECT_EQ(logCount("Rebinding Ferrylane after "), 2);
    EXPECT_EQ(logCount("Ferrylane network rebind completed"), 1);

    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    server().stopService();
    QTest::qWait(400);
    EXPECT_FALSE(support::isListening());
    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    EXPECT_EQ(logCount("Rebinding"), 3);
}

TEST_F(HTTPServerTest, aResponderThatCannotStartIsTriedAgainAndLoggedOnce)
{
    QUdpSocket other;
    ASSERT_TRUE(takeDiscoveryPort(other));
    EXPECT_THROW(createServer(), std::system_error);
    EXPECT_FALSE(support::isListening());

    other.close();
    startServer({.rebindDelay = 10ms, .retryInterval = 50ms});
    server().stopService();
    ASSERT_TRUE(takeDiscoveryPort(other));
    server().startService();
    EXPECT_EQ(logCount("Could not start Ferrylane service: Address already in use"), 1);
    EXPECT_TRUE(server().serviceRunning());
    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    QTest::qWait(300);
    EXPECT_EQ(logCount("Ferrylane network rebind failed: Address already in use"), 1);
    other.close();
    EXPECT_TRUE(
        support::processEventsUntil([] { return logCount("UDP discovery responder ready") == 2; }));
}

TEST_F(HTTPServerTest, visibilityIsKeptThroughAStop)
{
    startServer();
    EXPECT_EQ(logCount("Server ready on port 8788; Bonjour visible=true"), 1);
    server().setVisible(true);
    server().setVisible(false);
    ASSERT_TRUE(waitUntilReady(2));
    EXPECT_EQ(logCount("Bonjour advertisement disabled"), 1);

    server().stopService();
    server().setVisible(true);
    EXPECT_EQ(logCount("Bonjour advertisement enabled"), 0);
    server().setVisible(false);
    server().startService();
    ASSERT_TRUE(waitUntilReady(3));
    EXPECT_EQ(logCount("Server ready on port 8788; Bonjour visible=false"), 2);
    server().setVisible(true);
    EXPECT_EQ(logCount("Bonjour advertisement enabled"), 1);

    server().refreshAdvertisement();
    EXPECT_EQ(logCount("Bonjour advertisement refreshed as "), 1);
    server().stopService();
    server().refreshAdvertisement();
    EXPECT_FALSE(support::isListening());
}

TEST_F(HTTPServerTest, aPortInUseIsLoggedOnceAndTriedAgainInSilence)
{
    const auto other = network().listener(port);
    std::promise<void> ready;
    other->start([&](auto, auto) { ready.set_value(); }, [](const auto&) {});
    ready.get_future().wait();
    createServer({.retryInterval = 50ms});
    int failures = 0;
    QObject::connect(&server(), &HTTPServer::socketChanged,
        [&](auto, const std::error_code& error) { failures += error ? 1 : 0; });
    ASSERT_TRUE(support::processEventsUntil([&] { return failures == 3; }));
    EXPECT_EQ(logCount("Server listener failed: Address already in use"), 1);
    // Phones are not led to another program's port.
    QUdpSocket discovery;
    EXPECT_TRUE(takeDiscoveryPort(discovery));
    discovery.close();
    EXPECT_TRUE(server().serviceRunning());
    other->cancel();
    EXPECT_TRUE(
        support::processEventsUntil([] { return logCount("UDP discovery responder ready") == 2; }));
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
}

TEST_F(HTTPServerTest, removesWhatACrashHasLeftAndNothingElse)
{
    const QStringList stale{
        QStringLiteral(".6F9619FF-8B86-D011-B42D-00CF4FC964FF.ferrylane-v4-part"),
        QStringLiteral(".00000000-0000-0000-0000-000000000000.ferrylane-v4-part")};
    const QStringList others{QStringLiteral("photo.jpg"), QStringLiteral(".hidden"),
        QStringLiteral("6F9619FF-8B86-D011-B42D-00CF4FC964FF.ferrylane-v4-part"),
        QStringLiteral(".6F9619FF-8B86-D011-B42D-00CF4FC964FF.ferrylane-v4-part.txt"),
        QStringLiteral(".6F9619FF-8B86-D011-B42D-00CF4FC964F.ferrylane-v4-part"),
        QStringLiteral(".ferrylane-v4-part")};
    for (const QString& name : stale + others) {
        support::writeFile(received(name));
    }
    QFile::link(received(QStringLiteral("photo.jpg")),
        received(QStringLiteral(".11111111-1111-1111-1111-111111111111.ferrylane-v4-part")));
    startServer();
    EXPECT_EQ(logCount("Removed unfinished upload"), 2);
    for (const QString& name : stale) {
        EXPECT_FALSE(QFile::exists(received(name))) << name.toStdString();
        EXPECT_EQ(logCount("Removed unfinished upload " + name.toUtf8()), 1);
    }
    for (const QString& name : others) {
        EXPECT_TRUE(QFile::exists(received(name))) << name.toStdString();
    }
}

TEST_F(HTTPServerTest, whoeverHasNotFinishedARequestIsCutOffByAStop)
{
    startServer();
    TcpClient half;
    half.send("GET /transfer");
    // Served after it, so the half request has arrived.
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
    server().stopService();
    EXPECT_EQ(half.receiveAll(), "");
}

TEST_F(HTTPServerTest, theOldestOfTooManyHalfRequestsAreDropped)
{
    startServer();
    const std::size_t limit
        = ConnectionLimits::forDescriptors(platform::descriptorLimit()).incompleteHeads;
    std::vector<TcpClient> clients;
    for (std::size_t i = 0; i < limit + 10; ++i) {
        clients.emplace_back();
        ASSERT_TRUE(clients.back().send("GET /transfer-sta"));
    }
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
    // The one that asked for the status took a place as well.
    for (std::size_t i = 0; i < 11; ++i) {
        EXPECT_EQ(clients[i].receiveAll(), "") << i;
    }
    for (std::size_t i = 11; i < clients.size(); ++i) {
        clients[i].send("tus HTTP/1.1\r\n\r\n");
        ASSERT_EQ(summary(clients[i].receiveAll()), "200 OK|READY") << i;
    }
}
