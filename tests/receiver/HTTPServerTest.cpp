#include "receiver/HTTPServer.h"

#include "core/Notifications.h"
#include "core/Service.h"
#include "support/ServiceFixture.h"
#include "support/TcpClient.h"
#include "support/TestFiles.h"
#include "support/UploadStream.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace std::chrono_literals;
using support::answerTo;
using support::summary;
using support::TcpClient;

namespace {

using HTTPServerTest = support::ServiceFixture;

const QByteArray statusRequest = "GET /transfer-status HTTP/1.1\r\n\r\n";

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
    EXPECT_EQ(responder().starts, 2);
    EXPECT_EQ(responder().stops, 1);
}

TEST_F(HTTPServerTest, aBurstOfRebindsReopensOnce)
{
    startServer();
    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    mainQueue().advance(500ms);
    server().rebindAfterNetworkChange(QStringLiteral("network path/IP change"));
    mainQueue().advance(700ms);
    EXPECT_FALSE(support::isListening());
    EXPECT_EQ(logCount("network rebind completed"), 0);
    mainQueue().advance(50ms);
    ASSERT_TRUE(waitUntilReady(2));
    mainQueue().advance(5s);
    EXPECT_EQ(logCount("Rebinding Ferrylane after "), 2);
    EXPECT_EQ(logCount("Ferrylane network rebind completed"), 1);
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
}

TEST_F(HTTPServerTest, aStopWithinARebindKeepsTheSocketsClosed)
{
    startServer();
    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    server().stopService();
    mainQueue().advance(5s);
    EXPECT_FALSE(support::isListening());
    EXPECT_EQ(responder().starts, 1);

    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    EXPECT_EQ(logCount("Rebinding"), 1);
    EXPECT_EQ(mainQueue().delayedCount(), 0U);
}

TEST_F(HTTPServerTest, aFailedRebindIsLogged)
{
    startServer();
    server().rebindAfterNetworkChange(QStringLiteral("system wake"));
    responder().failing = true;
    mainQueue().advance(1s);
    EXPECT_EQ(logCount("Ferrylane network rebind failed: Input/output error"), 1);
    // It is tried again, and told once.
    mainQueue().advance(25s);
    EXPECT_EQ(logCount("Input/output error"), 1);
    responder().failing = false;
    mainQueue().advance(10s);
    EXPECT_TRUE(responder().isOpen);

    responder().failing = true;
    server().stopService();
    server().startService();
    EXPECT_EQ(logCount("Could not start Ferrylane service: Input/output error"), 1);
    EXPECT_TRUE(server().serviceRunning());
}

TEST_F(HTTPServerTest, visibilityIsKeptThroughAStop)
{
    startServer();
    EXPECT_EQ(logCount("Server ready on port 8788; Bonjour visible=true"), 1);
    server().setVisible(true);
    server().setVisible(false);
    ASSERT_TRUE(waitUntilReady(2));
    EXPECT_EQ(logCount("Bonjour advertisement disabled"), 1);
    EXPECT_FALSE(responder().visible);

    server().stopService();
    server().setVisible(true);
    EXPECT_EQ(logCount("Bonjour advertisement enabled"), 0);
    server().setVisible(false);
    server().startService();
    ASSERT_TRUE(waitUntilReady(3));
    EXPECT_EQ(logCount("Server ready on port 8788; Bonjour visible=false"), 2);
    server().setVisible(true);
    EXPECT_EQ(logCount("Bonjour advertisement enabled"), 1);
}

TEST_F(HTTPServerTest, isAnnouncedWhileReadyAndVisible)
{
    startServer();
    ASSERT_TRUE(mainQueue().waitFor([&] { return advertiser().announced; }));
    server().setVisible(false);
    EXPECT_FALSE(advertiser().announced);
    ASSERT_TRUE(waitUntilReady(2));
    mainQueue().runAll();
    EXPECT_FALSE(advertiser().announced);
    server().setVisible(true);
    ASSERT_TRUE(mainQueue().waitFor([&] { return advertiser().announced; }));
    server().stopService();
    EXPECT_FALSE(advertiser().announced);

    server().startService();
    server().refreshAdvertisement();
    ASSERT_TRUE(mainQueue().waitFor([&] { return advertiser().announced; }));
    EXPECT_EQ(logCount("Bonjour advertisement refreshed as "), 1);
    server().stopService();
    server().refreshAdvertisement();
    EXPECT_FALSE(support::isListening());
}

TEST_F(HTTPServerTest, anAnnouncementThatComesTooLateIsDropped)
{
    startServer();
    ASSERT_TRUE(waitUntilReady(1));
    // The listener's word is waiting on the main queue.
    server().stopService();
    mainQueue().runAll();
    EXPECT_FALSE(advertiser().announced);
}

TEST_F(HTTPServerTest, aPortInUseIsLoggedOnceAndTriedAgainInSilence)
{
    const auto other = network().listener(port);
    std::promise<void> ready;
    other->start([&](auto, auto) { ready.set_value(); }, [](const auto&) {});
    ready.get_future().wait();
    createServer();
    for (int tries = 0; tries < 3; ++tries) {
        ASSERT_TRUE(mainQueue().waitFor([&] { return mainQueue().delayedCount() == 1; }));
        EXPECT_FALSE(responder().isOpen) << "phones are not led to another program's port";
        mainQueue().advance(10s);
    }
    EXPECT_EQ(logCount("Server listener failed: Address already in use"), 1);
    EXPECT_TRUE(server().serviceRunning());
    ASSERT_TRUE(mainQueue().waitFor([&] { return mainQueue().delayedCount() == 1; }));
    other->cancel();
    mainQueue().advance(10s);
    ASSERT_TRUE(mainQueue().waitFor([&] { return responder().isOpen; }));
    EXPECT_EQ(summary(answerTo(statusRequest)), "200 OK|READY");
}

TEST_F(HTTPServerTest, creationFailsWithTheRespondersError)
{
    responder().failing = true;
    EXPECT_THROW(createServer(), std::system_error);
    EXPECT_FALSE(support::isListening());
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
