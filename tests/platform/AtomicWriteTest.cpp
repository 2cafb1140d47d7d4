#include "platform/Files.h"
#include "support/SystemCallFailure.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

#include <sys/stat.h>
#include <sys/syscall.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;

class AtomicWriteTest : public ::testing::Test {
protected:
    ~AtomicWriteTest() override { ::umask(umask_); }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    [[nodiscard]] QStringList everything() const { return support::everythingIn(folder_.path()); }

private:
    QTemporaryDir folder_;
    mode_t umask_ = ::umask(022);
};

TEST_F(AtomicWriteTest, HasExactlyTheModeWhateverTheUmask)
{
    const QString file = path(u"file"_s);
    for (const mode_t mask : {000U, 0777U}) {
        for (const mode_t mode : {0600U, 0644U}) {
            ::umask(mask);
            ASSERT_FALSE(writeFileAtomically(file, bytesOf("content"), mode));
            EXPECT_EQ(support::modeOf(file), mode) << "umask " << mask;
        }
    }
    EXPECT_EQ(everything(), QStringList{u"file"_s});
}

TEST_F(AtomicWriteTest, ReplacesALinkAndNotItsTarget)
{
    ASSERT_FALSE(writeFileAtomically(path(u"target"_s), bytesOf("old"), 0644));
    ASSERT_TRUE(QFile::link(path(u"target"_s), path(u"link"_s)));

    ASSERT_FALSE(writeFileAtomically(path(u"link"_s), bytesOf("new"), 0600));
    EXPECT_FALSE(QFileInfo(path(u"link"_s)).isSymLink());
    EXPECT_EQ(readFile(path(u"link"_s), 100), "new");
    EXPECT_EQ(readFile(path(u"target"_s), 100), "old");
}

TEST_F(AtomicWriteTest, KeepsTheOldContentWhicheverStepFails)
{
    const QString file = path(u"file"_s);
    ASSERT_FALSE(writeFileAtomically(file, bytesOf("old"), 0600));
    const std::vector<int> steps{SYS_write, SYS_fsync, SYS_close, support::plainRename};
    for (const int step : steps) {
        WriteResult result;
        ASSERT_TRUE(support::runWithFailures(
            {{step, EIO}}, [&] { result = writeFileAtomically(file, bytesOf("new"), 0600); }));
        EXPECT_EQ(result.failure, std::errc::io_error) << "system call " << step;
        EXPECT_EQ(readFile(file, 100), "old") << "system call " << step;
        EXPECT_EQ(everything(), QStringList{u"file"_s}) << "system call " << step;
    }
}

TEST_F(AtomicWriteTest, KeepsWhatWasWrittenWhereThereAreNoModes)
{
    ASSERT_TRUE(support::runWithFailures({{SYS_fchmod, EPERM}}, [&] {
        for (const WriteResult& result : {writeFileAtomically(path(u"a"_s), bytesOf("x"), 0600),
                 appendToFile(path(u"b"_s), bytesOf("x"), 0600)}) {
            EXPECT_FALSE(result);
            EXPECT_EQ(result.modeError, std::errc::operation_not_permitted);
        }
    }));
    EXPECT_EQ(readFile(path(u"a"_s), 100), "x");
    EXPECT_EQ(readFile(path(u"b"_s), 100), "x");
}

TEST_F(AtomicWriteTest, LeavesNothingWhereItCannotReplace)
{
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    EXPECT_TRUE(writeFileAtomically(path(u"folder"_s), bytesOf("x"), 0600));
    EXPECT_TRUE(writeFileAtomically(path(u"file/"_s), bytesOf("x"), 0600));
    EXPECT_TRUE(writeFileAtomically(path(u"missing/file"_s), bytesOf("x"), 0600));
    EXPECT_TRUE(writeFileAtomically(QString(), bytesOf("x"), 0600));
    EXPECT_EQ(everything(), QStringList{u"folder"_s});
    EXPECT_TRUE(QDir(path(u"folder"_s)).isEmpty());
}

} // namespace
} // namespace platform
