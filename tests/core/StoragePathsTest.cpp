#include "core/StoragePaths.h"

#include "core/Settings.h"
#include "support/PrivateUserFolders.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace ferrylane;

TEST(StoragePaths, lieInTheUsersBaseFolders)
{
    const support::PrivateUserFolders home;
    EXPECT_EQ(applicationSupportFolder(), home.data() + QStringLiteral("/Ferrylane"));
    EXPECT_EQ(logFolder(), home.state() + QStringLiteral("/Ferrylane"));
    EXPECT_FALSE(QDir(home.data()).exists() || QDir(home.state()).exists());
}

TEST(ReceiveDir, isInTheDownloadsUnlessAFolderIsChosen)
{
    const support::PrivateUserFolders home;
    const QString standard = home.downloads() + QStringLiteral("/Ferrylane");
    const QString chosen = home.below(QStringLiteral("some/where else"));
    EXPECT_EQ(receiveDir(), standard);
    EXPECT_TRUE(QDir(standard).exists());

    standardDefaults().set(ferrylaneReceiveFolderKey, chosen);
    EXPECT_EQ(receiveDir(), chosen);
    EXPECT_TRUE(QDir(chosen).exists());

    ASSERT_TRUE(QDir(standard).removeRecursively());
    standardDefaults().set(ferrylaneReceiveFolderKey, QString());
    EXPECT_EQ(receiveDir(), standard);
    EXPECT_TRUE(QDir(standard).exists()) << "created anew";
}

TEST(ReceiveDir, isToldEvenIfItCannotBeCreated)
{
    const support::PrivateUserFolders home;
    QFile obstacle(home.below(QStringLiteral("file")));
    ASSERT_TRUE(obstacle.open(QFile::WriteOnly));
    standardDefaults().set(ferrylaneReceiveFolderKey, home.below(QStringLiteral("file/folder")));
    EXPECT_EQ(receiveDir(), home.below(QStringLiteral("file/folder")));
}

TEST(Settings, areKeptInTheConfigFolder)
{
    const support::PrivateUserFolders outer;
    standardDefaults().set(ferrylaneVisibleKey, false);
    EXPECT_TRUE(QFile::exists(outer.config() + QStringLiteral("/Ferrylane/settings.ini")));
    {
        const support::PrivateUserFolders inner;
        EXPECT_TRUE(standardDefaults().boolean(ferrylaneVisibleKey, true));
    }
    EXPECT_FALSE(standardDefaults().boolean(ferrylaneVisibleKey, true));
}

TEST(Settings, haveKeysThatAResetFinds)
{
    for (const QLatin1StringView key : {ferrylaneReceiveFolderKey, ferrylaneDeviceNameKey,
             ferrylaneSelectedOutboundKeyPref, ferrylaneTransferLogContinuousKey,
             ferrylaneVisibleKey, ferrylaneServiceRunningKey, ferrylaneAutoOffSecondsKey}) {
        EXPECT_TRUE(key.startsWith(QLatin1StringView("Ferrylane"))) << key.data();
    }
}
