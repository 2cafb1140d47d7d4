#include "ReceiverTest.h"

// Phones that vanish.

using namespace e2e;

namespace {

class Interruption : public ReceiverTest {
protected:
    /// An upload that the service has admitted and waits for the rest of.
    [[nodiscard]] support::TcpClient startedUpload(const QByteArray& bytes) const
    {
        support::TcpClient client;
        client.send(bytes);
        EXPECT_TRUE(support::waitUntil([this] { return !home_.partialFiles().isEmpty(); }));
        EXPECT_EQ(readiness(), busy);
        return client;
    }

    void expectFreeSoon() const
    {
        EXPECT_TRUE(support::waitUntil([] { return readiness() == ready; }));
        expectNoTrace();
        EXPECT_EQ(home_.receivedFiles(), QStringList());
    }

    /// The service is free a moment before the log tells why.
    [[nodiscard]] bool hasFailed(qsizetype times, const QByteArray& reason) const
    {
        return support::waitUntil(
            [&] { return program_.log().count("  Secure V4 receive failed: " + reason) == times; });
    }
};

} // namespace

TEST_F(Interruption, byClosingFreesTheServiceAtAnyPoint)
{
    const QByteArray all = upload(u"a.bin"_s, support::testContent(2'000'000)).all();
    const qsizetype headEnd = all.indexOf("\r\n\r\n") + 4;
    for (const qsizetype length : {headEnd, headEnd + 1, all.size() / 2, all.size() - 5}) {
        {
            const auto client = startedUpload(all.first(length));
        }
        expectFreeSoon();
    }
    EXPECT_TRUE(hasFailed(4, "Connection closed before final HTTP chunk"));
}

TEST_F(Interruption, byAResetFreesTheServiceToo)
{
    const QByteArray all = upload(u"a.bin"_s, support::testContent(2'000'000)).all();
    startedUpload(all.chopped(5)).reset();
    expectFreeSoon();
    EXPECT_TRUE(hasFailed(1, "Connection error: ")) << program_.log().constData();
}

TEST_F(Interruption, afterTheLastByteStillStoresTheFile)
{
    {
        support::TcpClient client;
        client.send(upload(u"a.bin"_s, "content").all());
    }
    EXPECT_TRUE(program_.waitForLog("  Secure V4 received 7 bytes to "));
    EXPECT_TRUE(support::waitUntil([] { return readiness() == ready; }));
    EXPECT_EQ(home_.received(u"Pixel 8/a.bin"_s), "content");
}
