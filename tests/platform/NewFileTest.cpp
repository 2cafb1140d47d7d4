#include "platform/Files.h"
#include "support/SystemCallFailure.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;

class NewFileTest : public ::testing::Test {
protected:
    ~NewFileTest() override { ::umask(umask_); }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

private:
    QTemporaryDir folder_;
    mode_t umask_ = ::umask(022);
};

TEST_F(NewFileTest, HoldsWhatWasWrittenWithTheModeThatTheUmaskLeaves)
{
    // More than the step after which writing back begins, in pieces that do not divide it.
    const QByteArray piece = QByteArray("0123456789abc").repeated(100000);
    QByteArray expected;
    ::umask(027);
    std::error_code error;
    const auto file = NewFile::create(path(u"file"_s), error);
    ASSERT_TRUE(file);
    for (int i = 0; i < 20; ++i) {
        ASSERT_FALSE(file->write(bytesOf(piece)));
        expected.append(piece);
    }
    EXPECT_FALSE(file->sync());
    EXPECT_FALSE(file->close());
    EXPECT_TRUE(readFile(path(u"file"_s), expected.size()) == expected);

    EXPECT_EQ(support::modeOf(path(u"file"_s)), 0640U);
}

TEST_F(NewFileTest, OpensNothingThatIsThere)
{
    support::writeFile(path(u"file"_s));
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"dangling"_s)));

    for (const QString& name : {u"file"_s, u"folder"_s, u"dangling"_s}) {
        std::error_code error;
        EXPECT_FALSE(NewFile::create(path(name), error));
        EXPECT_EQ(error, std::errc::file_exists) << name.toStdString();
    }
    EXPECT_FALSE(itemExists(path(u"nowhere"_s)));
}

TEST_F(NewFileTest, TellsOfEachFailure)
{
    std::error_code writing;
    std::error_code syncing;
    std::error_code closing;
    ASSERT_TRUE(support::runWithFailures(
        {{SYS_write, ENOSPC}, {SYS_fdatasync, EIO}, {SYS_close, EDQUOT}}, [&] {
            std::error_code error;
            const auto file = NewFile::create(path(u"file"_s), error);
            ASSERT_TRUE(file);
            writing = file->write(bytesOf("x"));
            syncing = file->sync();
            closing = file->close();
        }));
    EXPECT_EQ(writing, std::errc::no_space_on_device);
    EXPECT_EQ(syncing, std::errc::io_error);
    EXPECT_EQ(closing.value(), EDQUOT);
}

} // namespace
} // namespace platform
