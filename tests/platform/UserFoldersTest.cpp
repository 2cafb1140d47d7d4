#include "platform/UserFolders.h"

#include "platform/linux/UserDirs.h"
#include "support/EnvironmentVariable.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;

TEST(DownloadFolderTest, IsWhatTheFileNames)
{
    struct Case {
        const char* text;
        const char* folder; ///< null when the file names none
    };
    for (const Case& c : {
             Case{"", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/Downloads")", "/home/u/Downloads"},
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/Meine Größe/in")", "/home/u/Meine Größe/in"},
             Case{R"(XDG_DOWNLOAD_DIR="/mnt/big/")", "/mnt/big"},
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/a\"b\\c\$d")", "/home/u/a\"b\\c$d"},
             // The home folder itself stands for none.
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="/home/u/")", nullptr},
             // Neither absolute nor below the home folder.
             Case{R"(XDG_DOWNLOAD_DIR="Downloads")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="$HOMER/Downloads")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="\$HOME/Downloads")", nullptr},
             // Not as the file must be written.
             Case{R"(XDG_DOWNLOAD_DIR=/mnt/big)", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="/mnt/big)", nullptr},
             Case{R"(#XDG_DOWNLOAD_DIR="/mnt/big")", nullptr},
             Case{"XDG_DESKTOP_DIR=\"$HOME/D\"\nXDG_DOWNLOAD_DIR=\"/a\"\nXDG_DOWNLOAD_DIR=\"/b\"\n",
                 "/b"},
         }) {
        const auto expected = c.folder ? std::optional(QString::fromUtf8(c.folder)) : std::nullopt;
        EXPECT_EQ(downloadFolderIn(c.text, u"/home/u"_s), expected) << c.text;
    }
}

TEST(UserFoldersTest, FollowTheirVariablesBelowTheHomeFolder)
{
    const QString recorded = QFile::decodeName(::getpwuid(::getuid())->pw_dir);
    struct Case {
        const char* home;
        const char* config;
        QString folder;
    };
    support::EnvironmentVariable home("HOME");
    support::EnvironmentVariable config("XDG_CONFIG_HOME");
    for (const Case& c : {
             Case{"/home/u", "", u"/home/u/.config"_s},
             Case{"/home/u/", "relative", u"/home/u/.config"_s},
             Case{"/", "~/x", u"/.config"_s},
             Case{"", "", recorded + u"/.config"_s},
             Case{"relative", "", recorded + u"/.config"_s},
             Case{"/home/u", "/x/y//", u"/x/y"_s},
             Case{"/home/u", "/", u"/"_s},
         }) {
        home.set(c.home);
        config.set(c.config);
        EXPECT_EQ(userConfigFolder(), c.folder) << c.home << ' ' << c.config;
    }
    home.unset();
    config.unset();
    EXPECT_EQ(userConfigFolder(), recorded + u"/.config"_s);
}

TEST(UserFoldersTest, AreOfTheirKind)
{
    const support::EnvironmentVariable home("HOME", "/home/u");
    support::EnvironmentVariable data("XDG_DATA_HOME");
    support::EnvironmentVariable state("XDG_STATE_HOME");
    EXPECT_EQ(userDataFolder(), u"/home/u/.local/share"_s);
    EXPECT_EQ(userStateFolder(), u"/home/u/.local/state"_s);
    data.set("/x");
    state.set("/y");
    EXPECT_EQ(userDataFolder(), u"/x"_s);
    EXPECT_EQ(userStateFolder(), u"/y"_s);
}

} // namespace
} // namespace platform
