#include "pairing/ReceiverKeyStore.h"

#include "core/StoragePaths.h"
#include "platform/Files.h"
#include "support/BadDisk.h"
#include "support/PrivateUserFolders.h"
#include "support/SystemCallFailure.h"
#include "support/TestFiles.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

using namespace ferrylane;
using support::modeOf;

namespace {

QByteArray loadedKey()
{
    return platform::toByteArray(loadOrCreateFerrylaneKey().bytes());
}

QByteArray keyFile()
{
    return platform::readFile(ferrylaneKeyURL(), 1000).value_or("none");
}

void storeKeyFile(const QByteArray& content, mode_t mode)
{
    ASSERT_FALSE(platform::createFolders(applicationSupportFolder()));
    ASSERT_FALSE(
        platform::writeFileAtomically(ferrylaneKeyURL(), platform::bytesOf(content), mode));
}

class ReceiverKeyStore : public testing::Test {
protected:
    support::PrivateUserFolders home_;
};

} // namespace

TEST_F(ReceiverKeyStore, closesFolderAndFilesAtEveryLoad)
{
    const QByteArray stored(32, 'k');
    storeKeyFile(stored, 0644);
    ASSERT_FALSE(platform::setMode(applicationSupportFolder(), 0755));
    const QString other = applicationSupportFolder() + QStringLiteral("/other");
    support::writeFile(other);
    ASSERT_FALSE(platform::setMode(other, 0666));
    EXPECT_EQ(loadedKey(), stored);
    EXPECT_EQ(modeOf(applicationSupportFolder()), 0700U);
    EXPECT_EQ(modeOf(ferrylaneKeyURL()), 0600U);
    EXPECT_EQ(modeOf(other), 0600U);
}

TEST_F(ReceiverKeyStore, replacesAFileOfAnotherLength)
{
    for (const qsizetype length : {0, 1, 31, 33, 43, 64}) {
        const QByteArray damaged(length, 'k');
        storeKeyFile(damaged, 0644);
        const QByteArray key = loadedKey();
        EXPECT_EQ(keyFile(), key) << length;
        EXPECT_FALSE(damaged.size() > 0 && key.startsWith(damaged.first(1).repeated(8))) << length;
        EXPECT_EQ(modeOf(ferrylaneKeyURL()), 0600U) << length;
    }
    EXPECT_TRUE(home_.log().isEmpty()) << home_.log().toStdString();
}

TEST_F(ReceiverKeyStore, logsAndGoesOnWithoutTheFile)
{
    // A folder cannot be read as a file nor replaced by one.
    ASSERT_FALSE(platform::createFolders(ferrylaneKeyURL() + QStringLiteral("/inner")));
    EXPECT_NE(loadedKey(), loadedKey()) << "not kept";
    EXPECT_TRUE(QFileInfo::exists(ferrylaneKeyURL() + QStringLiteral("/inner")));
    EXPECT_EQ(home_.log().count(u"Z  Could not persist receiver key: "), 2)
        << home_.log().toStdString();
    EXPECT_TRUE(home_.log().contains(u"Is a directory")) << home_.log().toStdString();
}

TEST_F(ReceiverKeyStore, losesNoKeyToADiskThatFails)
{
    auto disk = std::make_unique<support::BadDisk>(support::BadDisk::Faults{{}, EINVAL});
    const QByteArray key = loadedKey();
    EXPECT_EQ(home_.log().count(u"but a crash may undo that: Invalid argument"), 1);
    disk.reset();
    EXPECT_TRUE(support::runWithFailures({{SYS_read, EIO}}, [&] { EXPECT_NE(loadedKey(), key); }));
    EXPECT_EQ(loadedKey(), key);
}
