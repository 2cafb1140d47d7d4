#include "platform/Files.h"
#include "platform/Folder.h"
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

    [[nodiscard]] QString path(const QString& name) const { return temporary_.filePath(name); }
    [[nodiscard]] const Folder& folder() const { return *folder_; }

private:
    QTemporaryDir temporary_;
    std::error_code error_;
    std::unique_ptr<Folder> folder_ = Folder::open(temporary_.path(), error_);
    mode_t umask_ = ::umask(022);
};

TEST_F(NewFileTest, HoldsWhatWasWrittenWithTheModeThatTheUmaskLeaves)
{
    // More than the step after which writing back begins, in pieces that do not divide it.
    const QByteArray piece = QByteArray("0123456789abc").repeated(100000);
    QByteArray expected;
    ::umask(027);
    std::error_code error;
    const auto file = folder().createFile(u"file"_s, error);
    ASSERT_TRUE(file);
    for (int i = 0; i < 20; ++i) {
        ASSERT_FALSE(file->write(bytesOf(piece)));
        expected.append(piece);
    }
    EXPECT_FALSE(file->sync());
    EXPECT_TRUE(readFile(path(u"file"_s), expected.size()) == expected);

    EXPECT_EQ(support::modeOf(path(u"file"_s)), 0640U);
}

TEST_F(NewFileTest, OpensNothingThatIsThere)
{
    support::writeFile(path(u"file"_s));
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"dangling"_s)));

    std::error_code error;
    for (const QString& name : {u"../file"_s, u"folder/file"_s, u""_s}) {
        EXPECT_FALSE(folder().createFile(name, error)) << "it leads elsewhere";
    }
    for (const QString& name : {u"file"_s, u"folder"_s, u"dangling"_s}) {
        EXPECT_FALSE(folder().createFile(name, error));
        EXPECT_EQ(error, std::errc::file_exists) << name.toStdString();
    }
    EXPECT_FALSE(itemExists(path(u"nowhere"_s)));
}

TEST_F(NewFileTest, TellsOfEachFailure)
{
    const support::SystemCallFailure failures[]
        = {{SYS_write, ENOSPC}, {SYS_fdatasync, EIO}, {SYS_close, EDQUOT}};
    const Folder& into = folder();
    for (const auto& failure : failures) {
        ASSERT_TRUE(support::runWithFailures({failure}, [&] {
            std::error_code error;
            const auto file = into.createFile(QString::number(failure.call), error);
            error = file->write(bytesOf("x"));
            if (!error) error = file->sync();
            EXPECT_EQ(error.value(), failure.error);
        }));
    }
}

TEST_F(NewFileTest, IsNotTakenForAbandonedWhileItIsWritten)
{
    constexpr auto day = std::chrono::hours(24);
    std::error_code error;
    auto file = folder().createFile(u"file"_s, error);
    ASSERT_TRUE(file);
    ASSERT_FALSE(file->sync());
    // As another computer would try it, whose descriptors are others.
    EXPECT_FALSE(Folder::open(path({}), error)->removeUnlessLocked(u"file"_s, {}));
    file.reset();
    // Without locks only time tells.
    ASSERT_TRUE(support::runWithFailures({{SYS_fcntl, ENOLCK}}, [&] {
        EXPECT_FALSE(folder().removeUnlessLocked(u"file"_s, day));
        EXPECT_TRUE(folder().contains(u"file"_s));
    }));
    EXPECT_TRUE(folder().removeUnlessLocked(u"file"_s, day));
    ASSERT_TRUE(support::runWithFailures({{SYS_fcntl, ENOLCK}}, [&] {
        EXPECT_TRUE(folder().createFile(u"file"_s, error)) << "written all the same";
        EXPECT_TRUE(folder().removeUnlessLocked(u"file"_s, {}));
    }));
}

} // namespace
} // namespace platform
