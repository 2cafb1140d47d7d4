#include "platform/HostName.h"

#include "support/QtPrinting.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(HostNameTest, IsThePrettyOneOrTheFirstLabel)
{
    struct Case {
        const char* machineInfo;
        const char* name;
    };
    for (const Case& c : {
             Case{"", "desk"},
             Case{"PRETTY_HOSTNAME=Desk\n", "Desk"},
             Case{"ICON_NAME=computer\nPRETTY_HOSTNAME=\"Anna's \\\"big\\\" \\\\PC\"\nCHASSIS=x\n",
                 "Anna's \"big\" \\PC"},
             Case{"PRETTY_HOSTNAME='Büro ☂\\$'", "Büro ☂\\$"},
             Case{"PRETTY_HOSTNAME=\"  spaced\\n  \"", "spaced\\n"},
             Case{"PRETTY_HOSTNAME=\"\"", "desk"},
             Case{"PRETTY_HOSTNAME=\"", "desk"},
             Case{"PRETTY_HOSTNAME=\"open", "desk"},
             Case{"# PRETTY_HOSTNAME=Desk\n", "desk"},
             Case{"PRETTY_HOSTNAME=\"\xff\xfe\"\n", "desk"},
         }) {
        EXPECT_EQ(localizedHostName(c.machineInfo, QStringLiteral("desk.home.example")),
            QString::fromUtf8(c.name))
            << c.machineInfo;
    }
    EXPECT_EQ(localizedHostName({}, QStringLiteral(".lan")), QString());
    EXPECT_EQ(localizedHostName({}, QStringLiteral("desk")), QStringLiteral("desk"));
}

} // namespace
} // namespace platform
