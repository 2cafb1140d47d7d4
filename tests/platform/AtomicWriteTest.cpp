#include "platform/Files.h"
#include "support/SystemCallFailure.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;

/// No file of this process grows beyond a number of bytes: writing stops short there, then fails.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

class AtomicWriteTest : public ::testing::Test {
protected:
    ~AtomicWriteTest() override { ::umask(umask_); }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    [[nodiscard]] QStringList everything() const
    {
        return QDir(folder_.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    [[nodiscard]] static mode_t modeOf(const QString& file)
    {
        struct stat status {};
        EXPECT_EQ(::lstat(QFile::encodeName(file).constData(), &status), 0);
        return status.st_mode & 07777U;
    }

private:
    QTemporaryDir folder_;
    mode_t umask_ = ::umask(022);
};

TEST_F(AtomicWriteTest, HasExactlyTheModeWhateverTheUmask)
{
    const QString file = path(u"file"_s);
    for (const mode_t mask : {000U, 022U, 077U, 0777U}) {
        for (const mode_t mode : {0600U, 0644U, 0666U, 0400U}) {
            ::umask(mask);
            ASSERT_FALSE(writeFileAtomically(file, bytesOf("content"), mode));
            EXPECT_EQ(modeOf(file), mode) << "umask " << mask;
        }
    }
    EXPECT_EQ(everything(), QStringList{u"file"_s});
}

TEST_F(AtomicWriteTest, TakesNamesAsLongAsTheSystemDoes)
{
    const QString file = path(QString(255, u'n'));
    ASSERT_FALSE(writeFileAtomically(file, bytesOf("content"), 0600));
    EXPECT_EQ(readFile(file, 100), "content");
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

TEST_F(AtomicWriteTest, KeepsTheOldContentWhenThereIsNoRoom)
{
    const QString file = path(u"file"_s);
    ASSERT_FALSE(writeFileAtomically(file, bytesOf("old"), 0600));
    {
        const FileSizeLimit limit(100000);
        EXPECT_EQ(writeFileAtomically(file, bytesOf(QByteArray(150000, 'n')), 0600),
            std::errc::file_too_large);
    }
    EXPECT_EQ(readFile(file, 1000000), "old");
    EXPECT_EQ(everything(), QStringList{u"file"_s});
}

TEST_F(AtomicWriteTest, KeepsTheOldContentWhicheverStepFails)
{
    const QString file = path(u"file"_s);
    ASSERT_FALSE(writeFileAtomically(file, bytesOf("old"), 0600));
    const std::vector<int> steps{SYS_fchmod, SYS_write, SYS_fsync, SYS_close, support::plainRename};
    for (const int step : steps) {
        std::error_code error;
        ASSERT_TRUE(support::runWithFailures(
            {{step, EIO}}, [&] { error = writeFileAtomically(file, bytesOf("new"), 0600); }));
        EXPECT_EQ(error, std::errc::io_error) << "system call " << step;
        EXPECT_EQ(readFile(file, 100), "old") << "system call " << step;
        EXPECT_EQ(everything(), QStringList{u"file"_s}) << "system call " << step;
    }
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

TEST_F(AtomicWriteTest, ReadersSeeOneContentOrTheOther)
{
    const QString file = path(u"file"_s);
    const QByteArray first(50000, '1');
    const QByteArray second(70000, '2');
    ASSERT_FALSE(writeFileAtomically(file, bytesOf(first), 0600));

    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) {
            const auto content = readFile(file, 100000);
            EXPECT_TRUE(content == first || content == second);
        }
    });
    for (int i = 0; i < 100; ++i) {
        EXPECT_FALSE(writeFileAtomically(file, bytesOf(i % 2 == 0 ? second : first), 0600));
    }
    done = true;
    reader.join();
}

} // namespace
} // namespace platform
