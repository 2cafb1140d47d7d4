#include "ReceiverTest.h"

#include <sys/resource.h>

// Clients that have no key and do what they can to keep out those that have one.

using namespace e2e;

namespace {

class HostileNeighbour : public ReceiverTest {
protected:
    void SetUp() override
    {
        support::Scarcity scarcity;
        scarcity.descriptors = descriptors;
        ASSERT_TRUE(program_.start(scarcity));
        // What an upload opens for the first time, such as fonts, is open then.
        ASSERT_EQ(support::answerTo(upload(u"before.bin"_s, "content").all()), stored);
    }

    void limitDescriptors(rlim_t count)
    {
        const rlimit limits{count, descriptors};
        ASSERT_EQ(prlimit(program_.processId(), RLIMIT_NOFILE, &limits, nullptr), 0);
    }

    static constexpr rlim_t descriptors = 128;
};

} // namespace

TEST_F(HostileNeighbour, whoConnectsAndSaysNothingIsCutOffForOthers)
{
    std::vector<support::TcpClient> idle(300);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(readiness(), ready);
    EXPECT_EQ(support::answerTo(upload(u"a.bin"_s, "content").all()), stored);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    EXPECT_EQ(program_.log().count("  Server listener"), 0) << program_.log().constData();
}

TEST_F(HostileNeighbour, lackOfDescriptorsNeitherStopsNorSpinsTheProgram)
{
    const UploadBytes bytes = upload(u"a.bin"_s, support::testContent(3'000'000));
    support::TcpClient uploading;
    uploading.send(bytes.all().first(1'500'000));
    ASSERT_TRUE(support::waitUntil([this] { return !home_.partialFiles().isEmpty(); }));

    limitDescriptors(8); // It has more than that already.
    support::TcpClient waiting;
    // A program that tried again and again would use all of this second.
    const auto before = program_.processorTime();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(program_.processorTime() - before, std::chrono::milliseconds(200));

    EXPECT_TRUE(uploading.send(bytes.all().sliced(1'500'000).chopped(5)));
    limitDescriptors(descriptors);
    EXPECT_TRUE(uploading.send(bytes.end()));
    EXPECT_EQ(uploading.receiveAll(), stored) << "what is open goes on";
    EXPECT_EQ(home_.received(u"Pixel 8/a.bin"_s), support::testContent(3'000'000));
    waiting.send(getRequest("/transfer-status"));
    EXPECT_EQ(waiting.receiveAll(), ready) << "accepting goes on by itself";
    EXPECT_EQ(program_.log().count("  Server ready"), 1) << "it is the same listener";
}

TEST_F(HostileNeighbour, stormOfWrongKeysIsRefusedInAFewLines)
{
    const auto transfer = transferOf(u"storm.bin"_s, 7);
    const QByteArray forged = head(transfer)
        + support::chunkedBody(
            support::sealedRecords(platform::SecretKey::random(), transfer, "content"));
    constexpr int uploads = 300;
    for (int i = 0; i < uploads; ++i) {
        ASSERT_EQ(
            support::summary(support::answerTo(forged)), "400 Bad Request|Authentication failed");
    }
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(support::answerTo(upload(u"a.bin"_s, "content").all()), stored);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_TRUE(program_.waitForLog(" more in one second\n"));
    EXPECT_LT(program_.log().count("  Secure V4 receive failed"), uploads / 2);
    EXPECT_EQ(home_.receivedFiles().size(), 2);
    expectNoTrace();
}
