#include "platform/UserFolders.h"

#include "support/EnvironmentVariable.h"
#include "support/QtPrinting.h"
#include "support/TestFiles.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;

TEST(UserFoldersTest, FollowTheirVariablesBelowTheHomeFolder)
{
    const QByteArray recorded = ::getpwuid(::getuid())->pw_dir;
    struct Kind {
        const char* variable;
        QString (*folder)();
        QByteArray belowHome;
    };
    for (const Kind& kind : {Kind{"XDG_CONFIG_HOME", userConfigFolder, "/.config"},
             Kind{"XDG_DATA_HOME", userDataFolder, "/.local/share"},
             Kind{"XDG_STATE_HOME", userStateFolder, "/.local/state"}}) {
        struct Case {
            const char* home;
            const char* value;
            QByteArray folder;
        };
        support::EnvironmentVariable home("HOME");
        support::EnvironmentVariable variable(kind.variable);
        for (const Case& c : {
                 Case{"/home/u", "", "/home/u" + kind.belowHome},
                 Case{"/home/u/", "relative", "/home/u" + kind.belowHome},
                 Case{"/", "~/x", kind.belowHome},
                 Case{"relative", "", recorded + kind.belowHome},
                 Case{"/home/u", "/x/y//", "/x/y"},
                 Case{"/home/u", "/", "/"},
             }) {
            home.set(c.home);
            variable.set(c.value);
            EXPECT_EQ(kind.folder().toUtf8(), c.folder) << c.home << ' ' << c.value;
        }
        home.unset();
        variable.unset();
        EXPECT_EQ(kind.folder().toUtf8(), recorded + kind.belowHome);
    }
}

TEST(UserFoldersTest, DownloadsGoWhereTheUserSays)
{
    struct Case {
        QByteArray userDirs;
        QString folder; ///< begins with ~ below the home folder
    };
    const QTemporaryDir folder;
    const support::EnvironmentVariable home("HOME", folder.path().toUtf8());
    const support::EnvironmentVariable config("XDG_CONFIG_HOME", folder.path().toUtf8());
    for (const Case& c : {
             Case{"", u"~/Downloads"_s},
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/Meine Größe/in")", u"~/Meine Größe/in"_s},
             Case{R"(XDG_DOWNLOAD_DIR="/mnt/big/")", u"/mnt/big"_s},
             // The home folder itself stands for none.
             Case{R"(XDG_DOWNLOAD_DIR="$HOME/")", u"~/Downloads"_s},
             // Neither absolute nor below the home folder.
             Case{R"(XDG_DOWNLOAD_DIR="Loads")", u"~/Downloads"_s},
         }) {
        support::writeFile(folder.filePath(u"user-dirs.dirs"_s), c.userDirs);
        QString expected = c.folder;
        if (expected.startsWith(u'~')) expected.replace(0, 1, folder.path());
        EXPECT_EQ(userDownloadsFolder(), expected) << c.userDirs.constData();
    }
}

} // namespace
} // namespace platform
