#include "ReceiverTest.h"

#include "support/LoginManager.h"

#include <optional>

// The program and the computer's sleep.

using namespace e2e;

namespace {

class Sleep : public ReceiverTest {
protected:
    void SetUp() override
    {
        loginManager_.start();
        QProcessEnvironment environment = home_.environment();
        environment.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, loginManager_.busAddress());
        receiver_.emplace(receiverProgram, home_, environment);
        ASSERT_TRUE(receiver_->start()) << home_.log().constData();
    }

    bool becomesInhibited(bool isInhibited)
    {
        return support::waitUntil([&] { return loginManager_.isInhibited() == isInhibited; });
    }

    support::LoginManager loginManager_;
    std::optional<support::ProgramUnderTest> receiver_;
};

} // namespace

TEST_F(Sleep, waitsForTheEndOfAnUploadAndIsFollowedByARebind)
{
    const auto bytes = upload(u"a.bin"_s, "content");
    support::TcpClient whole;
    whole.send(bytes.withoutEnd());
    EXPECT_TRUE(becomesInhibited(true));
    whole.send(bytes.end());
    EXPECT_EQ(whole.receiveAll(), stored);
    EXPECT_TRUE(becomesInhibited(false));

    support::TcpClient broken;
    broken.send(bytes.withoutEnd());
    EXPECT_TRUE(becomesInhibited(true));
    broken.reset();
    EXPECT_TRUE(becomesInhibited(false));

    loginManager_.prepareForSleep(true);
    loginManager_.prepareForSleep(false);
    EXPECT_TRUE(receiver_->waitForLog("Rebinding Ferrylane after system wake"));
    EXPECT_TRUE(receiver_->waitForLog("Ferrylane network rebind completed"));
}
