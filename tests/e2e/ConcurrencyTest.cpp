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
