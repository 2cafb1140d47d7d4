#include "platform/Files.h"

#include "support/QtPrinting.h"
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
using support::modeOf;
using support::writeFile;

class FilesTest : public ::testing::Test {
protected:
    ~FilesTest() override { ::umask(umask_); }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    [[nodiscard]] QStringList everything() const { return support::everythingIn(folder_.path()); }
    void link(const QString& target, const QString& name) const
    {
        ASSERT_TRUE(QFile::link(path(target), path(name)));
    }

private:
    QTemporaryDir folder_;
    mode_t umask_ = ::umask(022);
};

TEST_F(FilesTest, PathWithNulNamesNothing)
{
    const QString file = path(u"file"_s);
    writeFile(file, "x");
    const QString longer = file + QChar(0) + u"rest"_s;

    EXPECT_FALSE(readFile(longer, 100));
    EXPECT_TRUE(writeFileAtomically(longer, bytesOf("y"), 0600));
    EXPECT_TRUE(appendToFile(longer, bytesOf("y"), 0600));
    EXPECT_TRUE(createFolders(path(u"folder"_s) + QChar(0)));
    EXPECT_FALSE(FilePath::fromUrl(QUrl(u"file:///tmp/a%00b"_s)));
    EXPECT_EQ(readFile(file, 100), "x");
}

TEST_F(FilesTest, CreatesFoldersStepByStep)
{
    ASSERT_TRUE(QDir().mkdir(path(u"real"_s)));
    link(u"real"_s, u"link"_s);
    writeFile(path(u"file"_s), "x");
    link(u"nowhere"_s, u"dangling"_s);
    link(u"file"_s, u"toFile"_s);
    const std::error_code fine;
    const std::error_code notFolder = std::make_error_code(std::errc::not_a_directory);
    for (const auto& [name, error] : std::vector<std::pair<QString, std::error_code>>{
             {u"a/b/c"_s, fine}, {u"a//b///d/"_s, fine}, {u"link/inside"_s, fine},
             {u"file/inside"_s, notFolder}, {u"dangling"_s, notFolder}, {u"toFile"_s, notFolder}}) {
        EXPECT_EQ(createFolders(path(name), 0700), error) << name.toStdString();
        EXPECT_EQ(QFileInfo(path(name)).isDir(), !error) << name.toStdString();
    }
    EXPECT_EQ(modeOf(path(u"real/inside"_s)), 0700U);
    EXPECT_EQ(modeOf(path(u"a/b"_s)), 0700U);
    EXPECT_EQ(readFile(path(u"file"_s), 10), "x");
    EXPECT_EQ(createFolders(QString()), std::errc::no_such_file_or_directory);
}

TEST_F(FilesTest, ReadsNothingButRegularFilesUpToTheLimitAndNeverWaits)
{
    std::error_code error;
    writeFile(path(u"file"_s), "0123456789");
    EXPECT_EQ(readFile(path(u"file"_s), 10, error), "0123456789");
    EXPECT_FALSE(error);
    EXPECT_FALSE(readFile(path(u"file"_s), 9, error));
    EXPECT_EQ(error, std::errc::file_too_large);
    EXPECT_FALSE(readFile(path(u"missing"_s), 9, error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"fifo"_s)).constData(), 0600), 0);
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    for (const QString& name : {path(u"fifo"_s), path(u"folder"_s), u"/dev/zero"_s}) {
        EXPECT_FALSE(readFile(name, 100, error)) << name.toStdString();
        EXPECT_EQ(error, std::errc::invalid_argument) << name.toStdString();
    }
}

TEST_F(FilesTest, AppendsAndReplacesWithExactlyTheModeWhateverTheUmask)
{
    for (const mode_t mask : {000U, 0777U}) {
        for (const mode_t mode : {0600U, 0644U}) {
            ::umask(mask);
            const QString file = path(u"file"_s);
            const QString appended = path(u"%1-%2"_s.arg(mask).arg(mode));
            ASSERT_FALSE(writeFileAtomically(file, bytesOf("content"), mode));
            ASSERT_FALSE(appendToFile(appended, bytesOf("one\n"), mode));
            ASSERT_FALSE(appendToFile(appended, bytesOf("two\n"), mode));
            EXPECT_EQ(readFile(file, 100), "content");
            EXPECT_EQ(readFile(appended, 100), "one\ntwo\n");
            EXPECT_EQ(modeOf(file), mode) << "umask " << mask;
            EXPECT_EQ(modeOf(appended), mode) << "umask " << mask;
        }
    }
    EXPECT_EQ(everything().size(), 5);
}

TEST_F(FilesTest, LeavesNothingWhereItCannotWrite)
{
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"fifo"_s)).constData(), 0600), 0);
    link(u"nowhere"_s, u"dangling"_s);
    const QStringList before = everything();

    for (const QString& name :
        {path(u"folder"_s), path(u"file/"_s), path(u"missing/file"_s), QString()}) {
        EXPECT_TRUE(writeFileAtomically(name, bytesOf("x"), 0600)) << name.toStdString();
        EXPECT_TRUE(appendToFile(name, bytesOf("x"), 0600)) << name.toStdString();
    }
    for (const QString& name : {path(u"fifo"_s), path(u"dangling"_s)}) {
        EXPECT_TRUE(appendToFile(name, bytesOf("x"), 0600)) << name.toStdString();
    }
    EXPECT_EQ(
        appendToFile(u"/dev/full"_s, bytesOf("x"), 0600).failure, std::errc::no_space_on_device);
    EXPECT_EQ(everything(), before);
    EXPECT_TRUE(QDir(path(u"folder"_s)).isEmpty());
}

TEST_F(FilesTest, ReplacesALinkAndNotItsTarget)
{
    writeFile(path(u"target"_s), "old");
    link(u"target"_s, u"link"_s);
    ASSERT_FALSE(writeFileAtomically(path(u"link"_s), bytesOf("new"), 0600));
    EXPECT_FALSE(QFileInfo(path(u"link"_s)).isSymLink());
    EXPECT_EQ(readFile(path(u"link"_s), 100), "new");
    EXPECT_EQ(readFile(path(u"target"_s), 100), "old");
}

TEST_F(FilesTest, KeepsTheOldContentWhicheverStepFails)
{
    const QString file = path(u"file"_s);
    ASSERT_FALSE(writeFileAtomically(file, bytesOf("old"), 0600));
    for (const int step : {SYS_write, SYS_fsync, SYS_close, support::plainRename}) {
        WriteResult result;
        ASSERT_TRUE(support::runWithFailures(
            {{step, EIO}}, [&] { result = writeFileAtomically(file, bytesOf("new"), 0600); }));
        EXPECT_EQ(result.failure, std::errc::io_error) << "system call " << step;
        EXPECT_EQ(readFile(file, 100), "old") << "system call " << step;
        EXPECT_EQ(everything(), QStringList{u"file"_s}) << "system call " << step;
    }
}

TEST_F(FilesTest, KeepsWhatWasWrittenWhereThereAreNoModes)
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

} // namespace
} // namespace platform
