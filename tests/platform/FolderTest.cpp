#include "platform/Folder.h"
#include "platform/Files.h"
#include "support/QtPrinting.h"
#include "support/SystemCallFailure.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <barrier>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;
using Failures = std::vector<support::SystemCallFailure>;

class FolderTest : public ::testing::Test {
protected:
    ~FolderTest() override { ::umask(umask_); }

    [[nodiscard]] QString path(const QString& name) const { return temporary_.filePath(name); }
    [[nodiscard]] QStringList everything() const { return support::everythingIn(path({})); }
    [[nodiscard]] QByteArray content(const QString& name) const
    {
        return readFile(path(name), qint64(1) << 30).value_or("none");
    }
    void write(const QString& name, const QByteArray& content = {}) const
    {
        support::writeFile(path(name), content);
    }
    [[nodiscard]] std::error_code moved(
        const QString& from, const QString& to, const Failures& failures) const
    {
        std::error_code error;
        EXPECT_TRUE(support::runWithFailures(
            failures, [&] { error = folder().moveWithoutReplacing(from, folder(), to); }));
        return error;
    }
    [[nodiscard]] const Folder& folder() const { return *folder_; }

private:
    QTemporaryDir temporary_;
    std::error_code error_;
    std::unique_ptr<Folder> folder_ = Folder::open(temporary_.path(), error_);
    mode_t umask_ = ::umask(022);
};

TEST_F(FolderTest, ListsWhatCanBeNamed)
{
    ASSERT_TRUE(QDir().mkpath(path(u"sub"_s)));
    write(u".hidden"_s);
    write(u"Größe ☂"_s);
    const QByteArray notUtf8 = QFile::encodeName(path({})) + "/\xff";
    ASSERT_EQ(::close(::open(notUtf8.constData(), O_WRONLY | O_CREAT, 0600)), 0);
    for (int time = 0; time < 2; ++time) {
        QStringList names = folder().names();
        names.sort();
        EXPECT_EQ(names, QStringList({u".hidden"_s, u"Größe ☂"_s, u"sub"_s}));
    }
    EXPECT_TRUE(folder().isFolder(u"sub"_s));
    EXPECT_FALSE(folder().isFolder(u".hidden"_s));
    std::error_code error;
    EXPECT_FALSE(Folder::open(path(u"missing"_s), error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(Folder::open(path(u".hidden"_s), error));
    EXPECT_EQ(error, std::errc::not_a_directory);
    EXPECT_EQ(::unlink(notUtf8.constData()), 0);
}

// A new file

TEST_F(FolderTest, AFileHoldsWhatWasWrittenWithTheModeThatTheUmaskLeaves)
{
    // More than the step after which writing back begins, in pieces that do not divide it.
    const QByteArray piece = QByteArray("0123456789abc").repeated(100000);
    ::umask(027);
    std::error_code error;
    const auto file = folder().createFile(u"file"_s, error);
    ASSERT_TRUE(file);
    for (int i = 0; i < 20; ++i) {
        ASSERT_FALSE(file->write(bytesOf(piece)));
    }
    EXPECT_FALSE(file->sync());
    EXPECT_TRUE(content(u"file"_s) == piece.repeated(20));
    EXPECT_EQ(support::modeOf(path(u"file"_s)), 0640U);

    const auto copy = folder().createFile(u"copy"_s, error);
    EXPECT_FALSE(file->copyTo(*copy));
    EXPECT_TRUE(content(u"copy"_s) == piece.repeated(20));
}

TEST_F(FolderTest, CreatingAFileOpensNothingThatIsThere)
{
    write(u"file"_s);
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"dangling"_s)));
    const QStringList before = everything();
    std::error_code error;
    for (const QString& name : {u"../file"_s, u"folder/file"_s, u""_s, u"file"_s + QChar(0)}) {
        EXPECT_FALSE(folder().createFile(name, error)) << "it leads elsewhere";
    }
    for (const QString& name : {u"file"_s, u"folder"_s, u"dangling"_s}) {
        EXPECT_FALSE(folder().createFile(name, error));
        EXPECT_EQ(error, std::errc::file_exists) << name.toStdString();
    }
    EXPECT_EQ(everything(), before);
}

TEST_F(FolderTest, AFileTellsOfEachFailure)
{
    for (const support::SystemCallFailure failure : {support::SystemCallFailure{SYS_write, ENOSPC},
             {SYS_fdatasync, EIO}, {SYS_close, EDQUOT}}) {
        ASSERT_TRUE(support::runWithFailures({failure}, [&] {
            std::error_code error;
            const auto file = folder().createFile(QString::number(failure.call), error);
            error = file->write(bytesOf("x"));
            if (!error) error = file->sync();
            EXPECT_EQ(error.value(), failure.error);
        }));
    }
}

TEST_F(FolderTest, AFileIsNotTakenForAbandonedWhileItIsWritten)
{
    constexpr auto day = std::chrono::hours(24);
    const Failures noLocks{{SYS_fcntl, ENOLCK}};
    std::error_code error;
    auto file = folder().createFile(u"file"_s, error);
    ASSERT_TRUE(file);
    ASSERT_FALSE(file->sync());
    // As another computer would try it, whose descriptors are others.
    EXPECT_FALSE(Folder::open(path({}), error)->removeUnlessLocked(u"file"_s, {}));
    file.reset();
    // Without locks only time tells.
    ASSERT_TRUE(support::runWithFailures(noLocks, [&] {
        EXPECT_FALSE(folder().removeUnlessLocked(u"file"_s, day));
        EXPECT_TRUE(folder().contains(u"file"_s));
    }));
    EXPECT_TRUE(folder().removeUnlessLocked(u"file"_s, day));
    ASSERT_TRUE(support::runWithFailures(noLocks, [&] {
        EXPECT_TRUE(folder().createFile(u"file"_s, error)) << "written all the same";
        EXPECT_TRUE(folder().removeUnlessLocked(u"file"_s, {}));
    }));
}

// Moving

/// On file systems that lack something.
class MoveTest : public FolderTest, public ::testing::WithParamInterface<Failures> {};

TEST_P(MoveTest, ReplacesNothingAndLeavesNothingWhenItFails)
{
    write(u"from"_s, "content");
    write(u"file"_s, "other");
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"dangling"_s)));
    ASSERT_TRUE(QFile::link(path(u"file"_s), path(u"link"_s)));
    const QStringList before = everything();
    for (const QString& name : {u"file"_s, u"folder"_s, u"dangling"_s, u"link"_s, u"from"_s}) {
        EXPECT_EQ(moved(u"from"_s, name, GetParam()), std::errc::file_exists) << name.toStdString();
    }
    const auto missing = std::errc::no_such_file_or_directory;
    EXPECT_EQ(moved(u"missing"_s, u"to"_s, GetParam()), missing);
    EXPECT_EQ(moved(u"from"_s, u"missing/to"_s, GetParam()), missing);
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(content(u"from"_s), "content");
    EXPECT_EQ(content(u"file"_s), "other");

    ASSERT_FALSE(setMode(path(u"from"_s), 0440));
    EXPECT_FALSE(moved(u"from"_s, u"to"_s, GetParam()));
    EXPECT_FALSE(folder().contains(u"from"_s));
    EXPECT_EQ(content(u"to"_s), "content");
    EXPECT_EQ(support::modeOf(path(u"to"_s)), 0440U);
}

TEST_P(MoveTest, OneOfTwoRivalsWins)
{
    constexpr int rounds = 300;
    std::array<std::array<std::error_code, rounds>, 2> errors;
    for (int round = 0; round < rounds; ++round) {
        write(u"0-%1"_s.arg(round), "0");
        write(u"1-%1"_s.arg(round), "1");
    }
    std::barrier together(2);
    const auto rival = [&](std::size_t self) {
        EXPECT_TRUE(support::runWithFailures(GetParam(), [&] {
            for (std::size_t round = 0; round < rounds; ++round) {
                together.arrive_and_wait();
                errors.at(self).at(round) = folder().moveWithoutReplacing(
                    u"%1-%2"_s.arg(self).arg(round), folder(), u"to-%1"_s.arg(round));
            }
        }));
    };
    std::thread other(rival, 1);
    rival(0);
    other.join();

    for (std::size_t round = 0; round < rounds; ++round) {
        const std::size_t winner = errors[0].at(round) ? 1 : 0;
        const std::size_t loser = 1 - winner;
        EXPECT_FALSE(errors.at(winner).at(round));
        EXPECT_EQ(errors.at(loser).at(round), std::errc::file_exists);
        EXPECT_EQ(content(u"to-%1"_s.arg(round)), QByteArray::number(uint(winner)));
        EXPECT_EQ(content(u"%1-%2"_s.arg(loser).arg(round)), QByteArray::number(uint(loser)));
        EXPECT_FALSE(folder().contains(u"%1-%2"_s.arg(winner).arg(round)));
    }
}

INSTANTIATE_TEST_SUITE_P(FileSystems, MoveTest,
    ::testing::Values(Failures{}, Failures{{SYS_renameat2, EINVAL}},
        Failures{{SYS_renameat2, EINVAL}, {SYS_linkat, EPERM}},
        Failures{{SYS_renameat2, ENOSYS}, {SYS_linkat, ENOSYS}},
        Failures{{SYS_renameat2, ENOTSUP}, {SYS_linkat, EOPNOTSUPP}}));

TEST_F(FolderTest, AMoveLeavesTheOldNameOnlyWhicheverStepFails)
{
    write(u"from"_s, "content");
    const auto otherDevice = std::errc::cross_device_link;
    for (const auto& [failures, error] :
        std::vector<std::pair<Failures, std::errc>>{{{{SYS_renameat2, EXDEV}}, otherDevice},
            {{{SYS_renameat2, EINVAL}, {SYS_linkat, EXDEV}}, otherDevice},
            {{{SYS_renameat2, EINVAL}, {SYS_unlinkat, EIO}}, std::errc::io_error},
            {{{SYS_renameat2, EINVAL}, {SYS_linkat, EPERM}, {SYS_renameat, EIO}},
                std::errc::io_error}}) {
        EXPECT_EQ(moved(u"from"_s, u"to"_s, failures), error);
        EXPECT_EQ(content(u"from"_s), "content");
        // Nothing is undone where nothing can be removed.
        if (failures.back().call == SYS_unlinkat) folder().remove(u"to"_s);
        EXPECT_EQ(everything(), QStringList{u"from"_s});
    }
}

} // namespace
} // namespace platform
