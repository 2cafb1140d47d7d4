#include "ReceiverTest.h"

#include <algorithm>
#include <barrier>
#include <thread>

// Many phones at once.

using namespace e2e;

namespace {

class Concurrency : public ReceiverTest {};

/// Connections that have sent `request`, all at the same moment.
std::vector<support::TcpClient> sendTogether(const QByteArray& request, std::ptrdiff_t count)
{
    std::vector<support::TcpClient> clients(static_cast<std::size_t>(count));
    std::barrier start(count);
    std::vector<std::jthread> threads;
    for (support::TcpClient& client : clients) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            client.send(request);
        });
    }
    return clients; // the threads are joined before it goes
}

} // namespace

TEST_F(Concurrency, oneOfSixteenUploadsIsAdmittedAtATime)
{
    constexpr int rounds = 20;
    const UploadBytes bytes = upload(u"a.bin"_s, "content");
    for (int round = 0; round < rounds; ++round) {
        // None is complete, so the one that is admitted stays the active one.
        auto clients = sendTogether(bytes.withoutEnd(), 16);
        const auto answered = [&clients] {
            return std::count_if(clients.begin(), clients.end(),
                [](const support::TcpClient& client) { return client.hasNews(); });
        };
        ASSERT_TRUE(support::waitUntil([&] { return answered() == 15; })) << answered();
        EXPECT_EQ(readiness(), busy);
        const auto admitted = std::find_if(clients.begin(), clients.end(),
            [](const support::TcpClient& client) { return !client.hasNews(); });
        ASSERT_NE(admitted, clients.end());
        for (auto client = clients.begin(); client != clients.end(); ++client) {
            if (client == admitted) continue;
            EXPECT_EQ(client->receiveAll(), busy);
        }
        admitted->send(bytes.end());
        EXPECT_EQ(admitted->receiveAll(), stored);
        EXPECT_EQ(readiness(), ready);
    }
    EXPECT_EQ(home_.receivedFiles().size(), rounds);
    expectNoTrace();
}

TEST_F(Concurrency, uploadsOneAfterTheOtherAreAllKept)
{
    const QStringList expected{u"Pixel 8/report (1).txt"_s, u"Pixel 8/report (2).txt"_s,
        u"Pixel 8/report (3).txt"_s, u"Pixel 8/report.txt"_s};
    for (const char* const content : {"first", "second", "third", "fourth"}) {
        EXPECT_EQ(support::answerTo(upload(u"report.txt"_s, content).all()), stored);
    }
    EXPECT_EQ(home_.receivedFiles(), expected);
    EXPECT_EQ(home_.received(u"Pixel 8/report.txt"_s), "first");
    EXPECT_EQ(home_.received(u"Pixel 8/report (3).txt"_s), "fourth");
}

TEST_F(Concurrency, theLatestOf300HalfHeadsAreKept)
{
    const QByteArray request = getRequest("/transfer-status");
    std::vector<support::TcpClient> clients(300);
    for (support::TcpClient& client : clients) {
        client.send(request.first(10));
    }
    constexpr std::size_t dropped = 300 - 256;
    ASSERT_TRUE(support::waitUntil([&] { return clients[dropped - 1].hasNews(); }));
    for (std::size_t i = 0; i < dropped; ++i) {
        EXPECT_EQ(clients[i].receiveAll(), "") << i;
    }

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(readiness(), ready);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));

    // The newcomer took the place of one more.
    for (std::size_t i = dropped + 1; i < clients.size(); ++i) {
        EXPECT_TRUE(clients[i].send(request.sliced(10))) << i;
        EXPECT_EQ(clients[i].receiveAll(), ready) << i;
    }
}
