#include "ReceiverTest.h"

// A program whose clients take all the descriptors that they can get.

using namespace e2e;

namespace {

class Descriptors : public ReceiverTest {
protected:
    void SetUp() override
    {
        support::Scarcity scarcity;
        scarcity.descriptors = 64;
        ASSERT_TRUE(program_.start(scarcity));
    }
};

} // namespace

TEST_F(Descriptors, whenUsedUpNeitherStopNorSpinTheProgram)
{
    // The undefined-behaviour sanitizer needs descriptors of its own for each type that it meets
    // for the first time; so all of them are met before.
    EXPECT_EQ(support::answerTo(upload(u"before.bin"_s, "content").all()), stored);

    const UploadBytes bytes = upload(u"a.bin"_s, support::testContent(3'000'000));
    support::TcpClient uploading;
    uploading.send(bytes.all().first(1'500'000));
    ASSERT_TRUE(support::waitUntil([this] { return !home_.partialFiles().isEmpty(); }));

    std::vector<support::TcpClient> clients(100);
    ASSERT_TRUE(program_.waitForLog("  Server listener waiting: Too many open files\n"));

    // A program that tried again and again would use all of this second.
    const auto before = program_.processorTime();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(program_.processorTime() - before, std::chrono::milliseconds(200));
    EXPECT_TRUE(program_.isRunning());

    EXPECT_TRUE(uploading.send(bytes.all().sliced(1'500'000)));
    EXPECT_EQ(uploading.receiveAll(), stored) << "what is open goes on";
    clients.clear();
    EXPECT_EQ(readiness(), ready) << "accepting goes on by itself";
    EXPECT_EQ(home_.received(u"Pixel 8/a.bin"_s), support::testContent(3'000'000));
}
