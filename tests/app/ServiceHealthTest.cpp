#include "app/ServiceHealth.h"

#include "support/QtPrinting.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using platform::Transport;

namespace {

const auto taken = std::make_error_code(std::errc::address_in_use);
const auto refused = std::make_error_code(std::errc::permission_denied);
const QString tryAgain = u"Switch the service on to try again. Sending files works meanwhile."_s;
const QString endIt = u"End that program, then switch the service on again. "
                      "Sending files works meanwhile."_s;

} // namespace

TEST(ServiceHealthTest, saysWhatIsWrongWhoHasThePortAndWhatToDo)
{
    struct Row {
        Transport transport;
        std::error_code error;
        std::optional<platform::PortHolder> holder;
        QString fault, advice;
    };
    const Row rows[]{
        {Transport::tcp, taken, platform::PortHolder{u"node"_s, 4711},
            u"TCP port 8788 is in use by \u201Cnode\u201D (process 4711)."_s, endIt},
        {Transport::udp, taken, {}, u"UDP port 8789 is in use by another program."_s, endIt},
        {Transport::tcp, refused, platform::PortHolder{u"node"_s, 4711},
            u"TCP port 8788 could not be opened: Permission denied."_s, tryAgain},
    };
    for (const Row& row : rows) {
        ServiceHealth health([&](Transport, std::uint16_t) { return row.holder; });
        health.set(row.transport, row.error);
        EXPECT_TRUE(health.isFaulty());
        EXPECT_EQ(health.faultText(), row.fault);
        EXPECT_EQ(health.adviceText(), row.advice);
        health.set(row.transport, {});
        EXPECT_EQ(health.faultText(), QString());
    }
}

TEST(ServiceHealthTest, isReachableFromTheFirstOpenPortToTheNextSwitching)
{
    ServiceHealth health([](Transport, std::uint16_t) { return std::nullopt; });
    health.set(Transport::udp, {});
    EXPECT_FALSE(health.hasBeenReachable());
    health.set(Transport::tcp, {});
    health.set(Transport::tcp, taken);
    EXPECT_TRUE(health.hasBeenReachable());
    health.reset();
    EXPECT_FALSE(health.hasBeenReachable());
    EXPECT_FALSE(health.isFaulty());
}
