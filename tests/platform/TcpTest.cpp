#include "platform/Tcp.h"

#include "support/TcpClient.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <thread>

using namespace platform;
using namespace std::chrono_literals;
using support::TcpClient;

namespace {

constexpr std::uint16_t testPort = 18788;

/// A listener whose connections are handed to the test.
class TcpTest : public ::testing::Test {
protected:
    struct ListenerState {
        TcpListener::State state;
        std::error_code error;
    };

    /// Starts a listener and tells the first state that it reaches.
    ListenerState listen()
    {
        listener_ = network_->listener(testPort);
        auto reached = std::make_shared<std::promise<ListenerState>>();
        listener_->start(
            [reached](TcpListener::State state, std::error_code error) {
                reached->set_value({state, error});
            },
            [this](std::shared_ptr<TcpConnection> connection) {
                accepted_.set_value(std::move(connection));
            });
        return reached->get_future().get();
    }

    std::shared_ptr<TcpConnection> accepted() { return accepted_.get_future().get(); }

    struct Received {
        QByteArray bytes;
        bool endOfStream;
        std::error_code error;
    };
    /// The buffer lives on until the handler has run, whatever the test does.
    static std::future<Received> receive(TcpConnection& connection, std::size_t minimum,
        std::size_t maximum, std::optional<Duration> limit = std::nullopt)
    {
        auto buffer = std::make_shared<ByteBuffer>();
        auto promise = std::make_shared<std::promise<Received>>();
        connection.receive(*buffer, minimum, maximum, limit,
            [buffer, promise](bool endOfStream, std::error_code error) {
                promise->set_value({toByteArray(buffer->unread()), endOfStream, error});
            });
        return promise->get_future();
    }

    std::unique_ptr<TcpNetwork> network_ = TcpNetwork::create("test.net");
    std::unique_ptr<TcpListener> listener_;
    std::promise<std::shared_ptr<TcpConnection>> accepted_;
};

} // namespace

TEST_F(TcpTest, receivesNoLessThanTheMinimumAndNoMoreThanTheMaximum)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    client.send("abc");
    const auto connection = accepted();
    auto six = receive(*connection, 6, 6);
    EXPECT_EQ(six.wait_for(50ms), std::future_status::timeout);
    client.send("defghi");
    EXPECT_EQ(six.get().bytes, "abcdef");
    EXPECT_EQ(receive(*connection, 1, 2).get().bytes, "gh");

    // The end comes before the minimum: both are told together.
    client.finishSending();
    const Received last = receive(*connection, 5, 10).get();
    EXPECT_EQ(last.bytes, "i");
    EXPECT_TRUE(last.endOfStream);
}

TEST_F(TcpTest, cancelEndsAPendingReceiveWithAnError)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    const auto connection = accepted();
    auto pending = receive(*connection, 1, 100);
    connection->cancel();
    EXPECT_EQ(pending.get().error, std::errc::operation_canceled);
    EXPECT_EQ(client.receiveAll(), "");
    EXPECT_EQ(receive(*connection, 1, 100).get().error, std::errc::operation_canceled);
}

TEST_F(TcpTest, aPeerThatSendsNothingForTooLongEndsAReceive)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    const auto connection = accepted();
    auto pending = receive(*connection, 4, 4, 300ms);
    for (const char* const byte : {"a", "b", "c"}) {
        std::this_thread::sleep_for(150ms);
        client.send(byte);
    }
    const Received received = pending.get();
    EXPECT_EQ(received.bytes, "abc");
    EXPECT_EQ(received.error, std::errc::timed_out);
    // The connection is good for an answer.
    connection->sendLast("too slow");
    EXPECT_EQ(client.receiveAll(), "too slow");
}

TEST_F(TcpTest, theLastMessageArrivesAlthoughUnreadBytesAreThere)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    client.send(QByteArray(200000, 'x'));
    accepted()->sendLast("refused");
    client.send(QByteArray(200000, 'y'));
    EXPECT_EQ(client.receiveAll(), "refused");
}

TEST_F(TcpTest, closesAPeerThatKeepsItsSideOpen)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    accepted()->sendLast("bye");
    EXPECT_EQ(client.receiveAll(), "bye");
    // The peer's kernel answers with a reset once the other side has closed for good.
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (client.send("still here") && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now(), deadline);
}

TEST_F(TcpTest, letsGoOfWhatIsKeptOnceItIsClosed)
{
    for (const bool isCancelled : {false, true}) {
        ASSERT_EQ(listen().state, TcpListener::State::ready);
        TcpClient client(testPort);
        const auto connection = accepted();
        accepted_ = {};
        if (isCancelled) connection->cancel();
        auto kept = std::make_shared<int>(0);
        const std::weak_ptr weak(kept);
        connection->sendLast("bye", std::move(kept));
        EXPECT_EQ(client.receiveAll(), isCancelled ? "" : "bye");
        client.finishSending();
        EXPECT_TRUE(support::waitUntil([&] { return weak.expired(); }));
        listener_->cancel();
    }
}

TEST_F(TcpTest, aPortInUseIsAFailedStateAndAFreedOneIsFreeAtOnce)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    client.send("x");
    const auto connection = accepted();
    {
        const auto second = network_->listener(testPort);
        std::promise<std::error_code> failed;
        second->start(
            [&](TcpListener::State state, std::error_code error) {
                EXPECT_EQ(state, TcpListener::State::failed);
                failed.set_value(error);
            },
            [](const auto&) { FAIL(); });
        EXPECT_EQ(failed.get_future().get(), std::errc::address_in_use);
    }
    for (int i = 0; i < 20; ++i) {
        listener_->cancel();
        ASSERT_EQ(listen().state, TcpListener::State::ready) << i;
    }
    // What was accepted lives on without its listener.
    connection->sendLast("still served");
    EXPECT_EQ(client.receiveAll(), "still served");
}

TEST_F(TcpTest, noConnectionIsHandedOutAfterCancel)
{
    for (int i = 0; i < 50; ++i) {
        auto cancelled = std::make_shared<std::atomic<bool>>(false);
        auto late = std::make_shared<std::atomic<int>>(0);
        const auto listener = network_->listener(testPort);
        std::promise<void> ready;
        listener->start([&](TcpListener::State, std::error_code) { ready.set_value(); },
            [cancelled, late](const auto&) { *late += *cancelled ? 1 : 0; });
        ready.get_future().wait();
        std::thread client([] { static_cast<void>(support::isListening(testPort)); });
        listener->cancel();
        *cancelled = true;
        client.join();
        EXPECT_EQ(*late, 0);
    }
}

TEST_F(TcpTest, connectsOutwards)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    const auto connection = network_->connection(QStringLiteral("127.0.0.1"), testPort);
    std::promise<TcpConnection::State> reached;
    connection->start(
        [&](TcpConnection::State state, std::error_code) { reached.set_value(state); });
    ASSERT_EQ(reached.get_future().get(), TcpConnection::State::ready);

    std::promise<std::error_code> sent;
    connection->send("over there", [&](std::error_code error) { sent.set_value(error); });
    EXPECT_FALSE(sent.get_future().get());
    const auto other = accepted();
    EXPECT_EQ(receive(*other, 10, 10).get().bytes, "over there");
    other->sendLast("and back");
    EXPECT_EQ(receive(*connection, 8, 8).get().bytes, "and back");
}

TEST_F(TcpTest, tellsWhyItCannotConnect)
{
    const auto connection = network_->connection(QStringLiteral("127.0.0.1"), testPort);
    std::promise<std::error_code> failed;
    connection->start([&](TcpConnection::State state, std::error_code error) {
        EXPECT_EQ(state, TcpConnection::State::failed);
        failed.set_value(error);
    });
    EXPECT_EQ(failed.get_future().get(), std::errc::connection_refused);
}
