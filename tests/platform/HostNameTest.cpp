#include "platform/HostName.h"

#include "platform/linux/MachineInfo.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(HostNameTest, PrettyNameInMachineInfo)
{
    struct Case {
        const char* text;
        const char* name;
    };
    for (const Case& c :
        {
            Case{"", ""},
            Case{"PRETTY_HOSTNAME=Desk\n", "Desk"},
            Case{"ICON_NAME=computer\nPRETTY_HOSTNAME=\"Anna's \\\"big\\\" PC\"\nCHASSIS=desktop\n",
                "Anna's \"big\" PC"},
            Case{"PRETTY_HOSTNAME='Büro ☂'", "Büro ☂"},
            Case{"PRETTY_HOSTNAME=\"  spaced  \"", "spaced"},
            Case{"PRETTY_HOSTNAME=\"\"", ""},
            Case{"PRETTY_HOSTNAME=\"open", ""},
            Case{"# PRETTY_HOSTNAME=Desk\n", ""},
            Case{"PRETTY_HOSTNAME=\"\xff\xfe\"\n", ""},
        }) {
        EXPECT_EQ(prettyHostNameIn(c.text), QString::fromUtf8(c.name)) << c.text;
    }
}

TEST(HostNameTest, FirstLabel)
{
    struct Case {
        const char* name;
        const char* label;
    };
    for (const Case& c : {Case{"desk", "desk"}, Case{"desk.lan", "desk"},
             Case{"desk.home.example", "desk"}, Case{"", ""}, Case{".lan", ""}}) {
        EXPECT_EQ(firstLabelOf(QString::fromUtf8(c.name)), QString::fromUtf8(c.label)) << c.name;
    }
}

} // namespace
} // namespace platform
