#include "app/KeepAwake.h"

#include "core/Notifications.h"
#include "support/ManualQueue.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ferrylane;

TEST(KeepAwakeTest, isHeldFromTheFirstTransferToTheEndOfTheLast)
{
    support::ManualQueue queue;
    platform::NotificationCenter notifications(queue);
    std::vector<bool> told;
    KeepAwake keepAwake(notifications, [&](bool isAwake) { told.push_back(isAwake); });
    const auto post = [&](QLatin1StringView name) {
        notifications.post(name);
        queue.runAll();
    };

    post(FerrylaneStarted);
    keepAwake.setSending(true);
    post(FerrylaneStopped);
    EXPECT_EQ(told, (std::vector{true}));
    keepAwake.setSending(false);
    EXPECT_EQ(told, (std::vector{true, false}));
    post(FerrylaneStarted);
    post(FerrylaneReceived);
    EXPECT_EQ(told, (std::vector{true, false, true, false}));
}
