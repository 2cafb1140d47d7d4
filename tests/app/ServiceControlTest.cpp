#include "app/ServiceControl.h"

#include "core/Settings.h"
#include "support/ManualQueue.h"
#include "support/PrivateUserFolders.h"

#include <gtest/gtest.h>

#include <QStringList>

using namespace ferrylane;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

/// Notes what it is told to do.
class FakeService final : public ServiceControl::Service {
public:
    void start() override { note(u"start"_s); }
    void stop() override { note(u"stop"_s); }
    void setVisible(bool visible) override { note(visible ? u"visible"_s : u"hidden"_s); }
    void rebind(const QString& reason) override { note(u"rebind: "_s + reason); }
    void startDiscovery() override { note(u"discover"_s); }
    void stopDiscovery() override { note(u"undiscover"_s); }
    void cancelSend() override { note(u"cancelSend"_s); }
    void refreshPairingCode() override { note(u"code"_s); }

    /// What it was told since the last call.
    [[nodiscard]] QString told() { return std::exchange(told_, {}).join(u", "_s); }

private:
    void note(const QString& what) { told_.append(what); }

    QStringList told_;
};

class ServiceControlTest : public ::testing::Test {
protected:
    void begin()
    {
        control_ = std::make_unique<ServiceControl>(service_, queue_, [this] { ++switched_; });
        control_->begin();
    }

    support::PrivateUserFolders folders_;
    support::ManualQueue queue_;
    FakeService service_;
    std::unique_ptr<ServiceControl> control_;
    int switched_ = 0;
};

const QString rebound = u"rebind: network path/IP change, undiscover, discover, code"_s;

} // namespace

TEST_F(ServiceControlTest, beginsAsTheSettingsSay)
{
    begin();
    EXPECT_EQ(service_.told(), u"visible, discover"_s);
    EXPECT_TRUE(control_->serviceRunning());

    userSettings().set(ferrylaneVisibleKey, false);
    userSettings().set(ferrylaneServiceRunningKey, false);
    begin();
    EXPECT_EQ(service_.told(), u"hidden, stop"_s);
    EXPECT_FALSE(control_->visible());
}

TEST_F(ServiceControlTest, switchesAndRemembers)
{
    begin();
    static_cast<void>(service_.told());
    control_->setServiceRunning(false);
    EXPECT_EQ(service_.told(), u"cancelSend, undiscover, stop"_s);
    EXPECT_FALSE(userSettings().boolean(ferrylaneServiceRunningKey, true));
    control_->setServiceRunning(true);
    EXPECT_EQ(service_.told(), u"start, discover"_s);
    EXPECT_TRUE(userSettings().boolean(ferrylaneServiceRunningKey, false));
    EXPECT_EQ(switched_, 2);
    control_->setVisible(false);
    EXPECT_EQ(service_.told(), u"hidden"_s);
    EXPECT_FALSE(userSettings().boolean(ferrylaneVisibleKey, true));
}

TEST_F(ServiceControlTest, switchesItselfOff)
{
    userSettings().set(ferrylaneAutoOffSecondsKey, 60);
    begin();
    queue_.advance(59s);
    EXPECT_TRUE(control_->serviceRunning());
    control_->setAutoOffSeconds(300); // counts anew
    queue_.advance(299s);
    EXPECT_TRUE(control_->serviceRunning());
    queue_.advance(1s);
    EXPECT_FALSE(control_->serviceRunning());
    EXPECT_FALSE(userSettings().boolean(ferrylaneServiceRunningKey, true));

    for (const qint64 never : {qint64{0}, qint64{-5}}) {
        control_->setServiceRunning(true);
        control_->setAutoOffSeconds(never);
        EXPECT_EQ(queue_.delayedCount(), 0U);
    }
    control_->setAutoOffSeconds(std::numeric_limits<qint64>::max());
    queue_.advance(1h);
    EXPECT_TRUE(control_->serviceRunning());
}

TEST_F(ServiceControlTest, rebindsOnceForABurstOfChanges)
{
    begin();
    control_->networkPathChanged(true); // the one it has started on
    queue_.advance(10s);
    static_cast<void>(service_.told());
    for (int i = 0; i < 3; ++i) {
        control_->networkPathChanged(true);
        queue_.advance(500ms);
    }
    queue_.advance(749ms);
    EXPECT_EQ(service_.told(), QString());
    queue_.advance(1ms);
    EXPECT_EQ(service_.told(), rebound);
    queue_.advance(1s);
    EXPECT_EQ(service_.told(), u"code"_s);
}

TEST_F(ServiceControlTest, theFirstNetworkAfterAStartWithoutOneBringsANewCode)
{
    begin();
    static_cast<void>(service_.told());
    control_->networkPathChanged(false);
    EXPECT_EQ(service_.told(), QString());
    control_->networkPathChanged(true);
    EXPECT_EQ(service_.told(), u"code"_s);
    queue_.advance(1s);
    EXPECT_EQ(service_.told(), u"code"_s);
    control_->networkPathChanged(false);
    control_->networkPathChanged(true);
    queue_.advance(1250ms);
    EXPECT_EQ(service_.told(), rebound);
}

TEST_F(ServiceControlTest, wakesUpAndIgnoresChangesWhileOff)
{
    begin();
    static_cast<void>(service_.told());
    control_->systemDidWake();
    queue_.advance(1499ms);
    EXPECT_EQ(service_.told(), QString());
    queue_.advance(1ms);
    EXPECT_TRUE(service_.told().startsWith(u"rebind: system wake"_s));

    control_->systemDidWake();
    control_->setServiceRunning(false); // a rebind that waits does nothing
    queue_.advance(10s);
    control_->systemDidWake();
    control_->setServiceRunning(true);
    queue_.advance(10s);
    EXPECT_FALSE(service_.told().contains(u"rebind"_s));
}

TEST_F(ServiceControlTest, aServiceThatCouldNotStartIsOffForNow)
{
    userSettings().set(ferrylaneAutoOffSecondsKey, 60);
    begin();
    static_cast<void>(service_.told());
    control_->serviceFailed();
    EXPECT_EQ(service_.told(), u"stop"_s);
    EXPECT_EQ(switched_, 1);
    EXPECT_FALSE(control_->serviceRunning());
    EXPECT_TRUE(userSettings().boolean(ferrylaneServiceRunningKey, true));
    queue_.advance(61s);
    EXPECT_EQ(service_.told(), QString());
    control_->setServiceRunning(true);
    EXPECT_EQ(service_.told(), u"start, discover"_s);
}
