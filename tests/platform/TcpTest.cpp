#include "platform/Tcp.h"

#include "support/TcpClient.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <future>
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
        listener_ = network_.listener(testPort);
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
        bool isEnd;
        std::error_code error;
    };
    /// The buffer lives on until the handler has run, whatever the test does.
    static std::future<Received> receive(TcpConnection& connection, std::size_t maximum)
    {
        auto buffer = std::make_shared<ByteBuffer>();
        auto promise = std::make_shared<std::promise<Received>>();
        connection.receive(*buffer, maximum, [buffer, promise](bool isEnd, std::error_code error) {
            promise->set_value({toByteArray(buffer->unread()), isEnd, error});
        });
        return promise->get_future();
    }

    TcpNetwork network_{"test.net"};
    std::unique_ptr<TcpListener> listener_;
    std::promise<std::shared_ptr<TcpConnection>> accepted_;
};

/// A client, and its accepted connection as a stream.
class TcpStreamTest : public TcpTest {
protected:
    TcpStreamTest()
    {
        EXPECT_EQ(listen().state, TcpListener::State::ready);
        client_.emplace(testPort);
        client_->send("!");
        connection_ = accepted();
        ByteBuffer buffer;
        std::promise<TcpStream*> promise;
        connection_->receive(buffer, 1, [&](bool /*isEnd*/, std::error_code /*error*/) {
            promise.set_value(&connection_->leaveQueue());
        });
        stream_ = promise.get_future().get();
    }

    [[nodiscard]] Received receive(std::size_t wanted, std::size_t maximum, Duration limit)
    {
        ByteBuffer buffer;
        const auto [isEnd, error] = stream_->receive(buffer, wanted, maximum, limit);
        return {toByteArray(buffer.unread()), isEnd, error};
    }

    std::optional<TcpClient> client_;
    std::shared_ptr<TcpConnection> connection_;
    TcpStream* stream_ = nullptr;
};

} // namespace

TEST_F(TcpTest, receivesWhatIsThereAndNoMoreThanTheMaximum)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    const auto connection = accepted();
    client.send("abc");
    QByteArray all;
    while (all.size() < 3) {
        const QByteArray some = receive(*connection, 2).get().bytes;
        ASSERT_TRUE(some.size() == 1 || some.size() == 2);
        all += some;
    }
    EXPECT_EQ(all, "abc");
    client.finishSending();
    EXPECT_TRUE(receive(*connection, 10).get().isEnd);
}

TEST_F(TcpTest, cancelEndsAPendingReceiveWithAnError)
{
    ASSERT_EQ(listen().state, TcpListener::State::ready);
    TcpClient client(testPort);
    const auto connection = accepted();
    auto pending = receive(*connection, 100);
    connection->cancel();
    EXPECT_EQ(pending.get().error, std::errc::operation_canceled);
    EXPECT_EQ(client.receiveAll(), "");
    EXPECT_EQ(receive(*connection, 100).get().error, std::errc::operation_canceled);
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
        const auto second = network_.listener(testPort);
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
        const auto listener = network_.listener(testPort);
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

TEST_F(TcpStreamTest, receivesNoLessThanIsWantedAndNoMoreThanTheMaximum)
{
    client_->send("abc");
    auto six = std::async([this] { return receive(6, 6, 10s); });
    EXPECT_EQ(six.wait_for(300ms), std::future_status::timeout);
    client_->send("defghi");
    EXPECT_EQ(six.get().bytes, "abcdef");
    EXPECT_EQ(receive(1, 2, 10s).bytes, "gh");

    // The end comes before what is wanted: both are told together.
    client_->finishSending();
    const Received last = receive(5, 10, 10s);
    EXPECT_EQ(last.bytes, "i");
    EXPECT_TRUE(last.isEnd);
}

TEST_F(TcpStreamTest, aPeerThatSendsNothingForTooLongEndsAReceive)
{
    auto pending = std::async([this] { return receive(1000000, 1000000, 400ms); });
    for (const char* const byte : {"a", "b", "c"}) {
        std::this_thread::sleep_for(200ms);
        client_->send(byte);
    }
    const auto start = std::chrono::steady_clock::now();
    const Received received = pending.get();
    EXPECT_EQ(received.bytes, "abc");
    EXPECT_EQ(received.error, std::errc::timed_out);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 350ms);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1500ms);
    // The connection is good for an answer, though crumbs follow.
    client_->send("d");
    connection_->sendLast("too slow");
    client_->send("e");
    EXPECT_EQ(client_->receiveAll(), "too slow");
}

TEST_F(TcpStreamTest, cancelEndsEveryWaitAndTellsThePeer)
{
    client_->send("abc");
    auto pending = std::async([this] { return receive(1000, 1000, 100s); });
    EXPECT_EQ(pending.wait_for(50ms), std::future_status::timeout);
    connection_->cancel();
    EXPECT_EQ(pending.get().error, std::errc::operation_canceled);
    EXPECT_EQ(receive(1, 1, 100s).error, std::errc::operation_canceled);
    EXPECT_EQ(client_->receiveAll(), "");
    auto kept = std::make_shared<int>(0);
    const std::weak_ptr weak(kept);
    connection_->sendLast("never", std::move(kept));
    EXPECT_TRUE(support::waitUntil([&] { return weak.expired(); }));
}

TEST_F(TcpStreamTest, connectsAndHearsWhatThePeerSaysMeanwhile)
{
    TcpStream outward;
    accepted_ = {};
    ASSERT_FALSE(outward.connect(QStringLiteral("localhost"), testPort, 10s));
    const auto other = accepted();
    ByteBuffer answer;
    EXPECT_FALSE(outward.send(bytesOf("over there"), answer, 100).isEnd);
    EXPECT_EQ(TcpTest::receive(*other, 100).get().bytes, "over there");
    // Nobody reads more: only the answer ends this.
    auto endless = std::async([&] {
        const QByteArray bytes(100000000, 'x');
        return outward.send(bytesOf(bytes), answer, 100);
    });
    EXPECT_EQ(endless.wait_for(50ms), std::future_status::timeout);
    other->sendLast("and back");
    const auto [isEnd, error] = endless.get();
    EXPECT_TRUE(isEnd || error);
    EXPECT_EQ(toByteArray(answer.unread()), "and back");
}

TEST(TcpStream, tellsWhyItCannotConnect)
{
    EXPECT_EQ(TcpStream().connect(QStringLiteral("127.0.0.1"), testPort, 10s),
        std::errc::connection_refused);
    TcpStream cancelled;
    cancelled.cancel();
    EXPECT_EQ(cancelled.connect(QStringLiteral("localhost"), testPort, 10s),
        std::errc::operation_canceled);
}
