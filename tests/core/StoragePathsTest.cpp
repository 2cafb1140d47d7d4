#include "core/StoragePaths.h"

#include "core/Settings.h"
#include "support/PrivateUserFolders.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace ferrylane;

TEST(ReceiveDir, isInTheDownloadsUnlessAFolderIsChosen)
{
    const support::PrivateUserFolders home;
    const QString standard = home.downloads() + QStringLiteral("/Ferrylane");
    const QString chosen = home.below(QStringLiteral("some/where else"));
    EXPECT_EQ(receiveDir(), standard);
    EXPECT_TRUE(QDir(standard).exists());

    userSettings().set(ferrylaneReceiveFolderKey, chosen);
    EXPECT_EQ(receiveDir(), chosen);
    EXPECT_TRUE(QDir(chosen).exists());

    ASSERT_TRUE(QDir(standard).removeRecursively());
    userSettings().set(ferrylaneReceiveFolderKey, QString());
    EXPECT_EQ(receiveDir(), standard);
    EXPECT_TRUE(QDir(standard).exists()) << "created anew";
}
