#include "platform/UserFolders.h"

#include "platform/Files.h"
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
             Case{R"(XDG_DOWNLOAD_DIR="/")", "/"},
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/a\"b\\c\$d")", "/home/u/a\"b\\c$d"},
             // The home folder itself stands for none.
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="$HOME//")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="$HOME")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="/home/u/")", nullptr},
             // Neither absolute nor below the home folder.
             Case{R"(XDG_DOWNLOAD_DIR="Downloads")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="$HOMER/Downloads")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="\$HOME/Downloads")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="$OTHER/Downloads")", nullptr},
             Case{R"(XDG_DOWNLOAD_DIR="")", nullptr},
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

class UserFoldersTest : public ::testing::Test {
protected:
    support::EnvironmentVariable home_{"HOME", "/home/u"};
    support::EnvironmentVariable config_{"XDG_CONFIG_HOME"};
    support::EnvironmentVariable data_{"XDG_DATA_HOME"};
    support::EnvironmentVariable state_{"XDG_STATE_HOME"};
};

TEST_F(UserFoldersTest, FollowTheirVariables)
{
    struct Case {
        const char* value;
        const char* config;
        const char* data;
        const char* state;
    };
    for (const Case& c : {
             Case{"", "/home/u/.config", "/home/u/.local/share", "/home/u/.local/state"},
             Case{"relative", "/home/u/.config", "/home/u/.local/share", "/home/u/.local/state"},
             Case{"~/x", "/home/u/.config", "/home/u/.local/share", "/home/u/.local/state"},
             Case{"/x/y", "/x/y", "/x/y", "/x/y"},
             Case{"/x/y//", "/x/y", "/x/y", "/x/y"},
             Case{"/", "/", "/", "/"},
         }) {
        config_.set(c.value);
        data_.set(c.value);
        state_.set(c.value);
        EXPECT_EQ(userConfigFolder(), QString::fromUtf8(c.config)) << c.value;
        EXPECT_EQ(userDataFolder(), QString::fromUtf8(c.data)) << c.value;
        EXPECT_EQ(userStateFolder(), QString::fromUtf8(c.state)) << c.value;
    }
}

TEST_F(UserFoldersTest, LieBelowTheHomeFolder)
{
    const QString recorded = QFile::decodeName(::getpwuid(::getuid())->pw_dir);
    struct Case {
        const char* home;
        QString config;
    };
    for (const Case& c : {
             Case{"/home/u/", u"/home/u/.config"_s},
             Case{"/", u"/.config"_s},
             Case{"", recorded + u"/.config"_s},
             Case{"relative", recorded + u"/.config"_s},
         }) {
        home_.set(c.home);
        EXPECT_EQ(userConfigFolder(), c.config) << c.home;
    }
    home_.unset();
    EXPECT_EQ(userConfigFolder(), recorded + u"/.config"_s);
}

} // namespace
} // namespace platform
