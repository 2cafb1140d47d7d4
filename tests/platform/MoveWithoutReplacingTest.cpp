#include "platform/Files.h"
#include "platform/Folder.h"
#include "support/SystemCallFailure.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <barrier>
#include <ostream>
#include <thread>
#include <vector>

#include <sys/syscall.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;

/// What a file system lacks.
struct FileSystem {
    const char* name;
    std::vector<support::SystemCallFailure> failures;
};

void PrintTo(const FileSystem& fileSystem, std::ostream* out)
{
    *out << fileSystem.name;
}

std::string nameOf(const ::testing::TestParamInfo<FileSystem>& instance)
{
    return instance.param.name;
}

class MoveWithoutReplacingTest : public ::testing::TestWithParam<FileSystem> {
protected:
    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    [[nodiscard]] QStringList everything() const { return support::everythingIn(folder_.path()); }
    void write(const QString& name, const QByteArray& content) const
    {
        support::writeFile(path(name), content);
        ASSERT_TRUE(QFile::setPermissions(path(name), QFile::ReadOwner | QFile::ReadGroup));
    }
    [[nodiscard]] std::error_code move(const QString& from, const QString& to) const
    {
        return open_->moveWithoutReplacing(from, *open_, to);
    }
    [[nodiscard]] std::error_code moved(const QString& from, const QString& to) const
    {
        std::error_code error;
        EXPECT_TRUE(support::runWithFailures(GetParam().failures, [&] { error = move(from, to); }));
        return error;
    }

private:
    QTemporaryDir folder_;
    std::error_code error_;
    std::unique_ptr<Folder> open_ = Folder::open(folder_.path(), error_);
};

TEST_P(MoveWithoutReplacingTest, MovesToAFreeName)
{
    write(u"from"_s, "content");
    EXPECT_FALSE(moved(u"from"_s, u"to"_s));
    EXPECT_EQ(everything(), QStringList{u"to"_s});
    EXPECT_EQ(readFile(path(u"to"_s), 100), "content");
    EXPECT_EQ(support::modeOf(path(u"to"_s)), 0440U);
}

TEST_P(MoveWithoutReplacingTest, ReplacesNothingAndLeavesNothingWhenItFails)
{
    write(u"from"_s, "content");
    write(u"file"_s, "other");
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"dangling"_s)));
    ASSERT_TRUE(QFile::link(path(u"file"_s), path(u"link"_s)));
    const QStringList before = everything();

    for (const QString& name : {u"file"_s, u"folder"_s, u"dangling"_s, u"link"_s, u"from"_s}) {
        EXPECT_EQ(moved(u"from"_s, name), std::errc::file_exists) << name.toStdString();
    }
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(readFile(path(u"from"_s), 100), "content");
    EXPECT_EQ(readFile(path(u"file"_s), 100), "other");

    const auto missing = std::errc::no_such_file_or_directory;
    EXPECT_EQ(moved(u"missing"_s, u"to"_s), missing);
    EXPECT_EQ(moved(u"from"_s, u"missing/to"_s), missing);
    EXPECT_EQ(everything(), before);
}

TEST_P(MoveWithoutReplacingTest, OneOfTwoRivalsWins)
{
    constexpr int rounds = 300;
    std::array<std::array<std::error_code, rounds>, 2> errors;
    for (int round = 0; round < rounds; ++round) {
        write(u"0-%1"_s.arg(round), "0");
        write(u"1-%1"_s.arg(round), "1");
    }

    std::barrier together(2);
    const auto rival = [&](std::size_t self) {
        EXPECT_TRUE(support::runWithFailures(GetParam().failures, [&] {
            for (std::size_t round = 0; round < rounds; ++round) {
                together.arrive_and_wait();
                errors.at(self).at(round)
                    = move(u"%1-%2"_s.arg(self).arg(round), u"to-%1"_s.arg(round));
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
        EXPECT_EQ(readFile(path(u"to-%1"_s.arg(round)), 10), QByteArray::number(uint(winner)));
        EXPECT_EQ(
            readFile(path(u"%1-%2"_s.arg(loser).arg(round)), 10), QByteArray::number(uint(loser)));
        EXPECT_FALSE(itemExists(path(u"%1-%2"_s.arg(winner).arg(round))));
    }
}

INSTANTIATE_TEST_SUITE_P(FileSystems, MoveWithoutReplacingTest,
    ::testing::Values(FileSystem{"Complete", {}},
        FileSystem{"NoExclusiveRename", {{SYS_renameat2, EINVAL}}},
        FileSystem{"NoHardLinks", {{SYS_renameat2, EINVAL}, {SYS_linkat, EPERM}}},
        FileSystem{"NoSuchCalls", {{SYS_renameat2, ENOSYS}, {SYS_linkat, ENOSYS}}},
        FileSystem{"NotSupported", {{SYS_renameat2, ENOTSUP}, {SYS_linkat, EOPNOTSUPP}}}),
    nameOf);

TEST(MoveFailureTest, StaysUnderTheOldNameOnlyWhicheverStepFails)
{
    struct Case {
        std::vector<support::SystemCallFailure> failures;
        std::errc error;
    };
    const std::vector<Case> cases{
        {{{SYS_renameat2, EXDEV}}, std::errc::cross_device_link},
        {{{SYS_renameat2, EINVAL}, {SYS_linkat, EXDEV}}, std::errc::cross_device_link},
        {{{SYS_renameat2, EINVAL}, {SYS_linkat, EPERM}, {SYS_renameat, EIO}}, std::errc::io_error},
    };
    const QTemporaryDir temporary;
    const QString from = temporary.filePath(u"from"_s);
    std::error_code opening;
    const auto folder = Folder::open(temporary.path(), opening);
    ASSERT_FALSE(writeFileAtomically(from, bytesOf("content"), 0600));
    for (const Case& c : cases) {
        std::error_code error;
        ASSERT_TRUE(support::runWithFailures(c.failures,
            [&] { error = folder->moveWithoutReplacing(u"from"_s, *folder, u"to"_s); }));
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(folder->names(), QStringList{u"from"_s});
        EXPECT_EQ(readFile(from, 100), "content");
    }
}

} // namespace
} // namespace platform
