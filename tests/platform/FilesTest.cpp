#include "platform/Files.h"
#include "platform/Folder.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

using namespace Qt::StringLiterals;
using support::modeOf;
using support::writeFile;

class FilesTest : public ::testing::Test {
protected:
    ~FilesTest() override { ::umask(umask_); }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    void link(const QString& target, const QString& name) const
    {
        ASSERT_TRUE(QFile::link(target, path(name)));
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

    EXPECT_FALSE(itemExists(longer));
    EXPECT_FALSE(readFile(longer, 100));
    EXPECT_FALSE(removeFile(longer));
    EXPECT_TRUE(writeFileAtomically(longer, bytesOf("y"), 0600));
    EXPECT_TRUE(appendToFile(longer, bytesOf("y"), 0600));
    EXPECT_TRUE(createFolders(path(u"folder"_s) + QChar(0)));
    EXPECT_EQ(readFile(file, 100), "x");
}

TEST_F(FilesTest, CreatesFoldersStepByStep)
{
    ASSERT_TRUE(QDir().mkdir(path(u"real"_s)));
    link(path(u"real"_s), u"link"_s);
    writeFile(path(u"file"_s), "x");
    link(path(u"nowhere"_s), u"dangling"_s);
    link(path(u"file"_s), u"toFile"_s);

    struct Case {
        QString name;
        std::error_code error;
    };
    const std::error_code fine;
    const std::error_code notFolder = std::make_error_code(std::errc::not_a_directory);
    const std::vector<Case> cases{
        {u"a/b/c"_s, fine},
        {u"a//b///d/"_s, fine},
        {u"link/inside"_s, fine},
        {u"file/inside"_s, notFolder},
        {u"dangling"_s, notFolder},
        {u"toFile"_s, notFolder},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(createFolders(path(c.name)), c.error) << c.name.toStdString();
        EXPECT_EQ(QFileInfo(path(c.name)).isDir(), !c.error) << c.name.toStdString();
    }
    EXPECT_TRUE(QFileInfo(path(u"real/inside"_s)).isDir());
    EXPECT_EQ(readFile(path(u"file"_s), 10), "x");
    EXPECT_EQ(createFolders(QString()), std::errc::no_such_file_or_directory);
}

TEST_F(FilesTest, ReadsNothingButRegularFilesUpToTheLimitAndNeverWaits)
{
    writeFile(path(u"file"_s), "0123456789");
    EXPECT_EQ(readFile(path(u"file"_s), 10), "0123456789");
    EXPECT_FALSE(readFile(path(u"file"_s), 9));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"fifo"_s)).constData(), 0600), 0);
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    for (const QString& name : {path(u"fifo"_s), path(u"folder"_s), u"/dev/zero"_s}) {
        EXPECT_FALSE(readFile(name, 100)) << name.toStdString();
    }
}

TEST_F(FilesTest, AppendsAndCreatesWithExactlyTheMode)
{
    for (const mode_t mask : {000U, 077U}) {
        ::umask(mask);
        const QString file = path(QString::number(mask));
        ASSERT_FALSE(appendToFile(file, bytesOf("one\n"), 0640));
        ASSERT_FALSE(appendToFile(file, bytesOf("two\n"), 0640));
        EXPECT_EQ(readFile(file, 100), "one\ntwo\n");
        EXPECT_EQ(modeOf(file), 0640U) << "umask " << mask;
    }
}

TEST_F(FilesTest, AppendingReportsWhatCannotBeWritten)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"fifo"_s)).constData(), 0600), 0);
    link(path(u"nowhere"_s), u"dangling"_s);

    EXPECT_TRUE(appendToFile(path(u"fifo"_s), bytesOf("x"), 0600));
    EXPECT_TRUE(appendToFile(path(u"dangling"_s), bytesOf("x"), 0600));
    EXPECT_TRUE(appendToFile(path(u"missing/file"_s), bytesOf("x"), 0600));
    EXPECT_EQ(
        appendToFile(u"/dev/full"_s, bytesOf("x"), 0600).failure, std::errc::no_space_on_device);
    EXPECT_FALSE(itemExists(path(u"nowhere"_s)));
}

TEST_F(FilesTest, ListsWhatCanBeNamed)
{
    const QString folder = path(u"list"_s);
    ASSERT_TRUE(QDir().mkpath(folder + u"/sub"_s));
    writeFile(folder + u"/.hidden"_s, "x");
    writeFile(folder + u"/Größe ☂"_s, "x");
    const QByteArray notUtf8 = QFile::encodeName(folder) + "/\xff";
    ASSERT_EQ(::close(::open(notUtf8.constData(), O_WRONLY | O_CREAT, 0600)), 0);

    std::error_code error;
    const auto open = Folder::open(folder, error);
    for (int time = 0; time < 2; ++time) {
        QStringList names = open->names();
        names.sort();
        EXPECT_EQ(names, QStringList({u".hidden"_s, u"Größe ☂"_s, u"sub"_s}));
    }
    EXPECT_TRUE(open->isFolder(u"sub"_s));
    EXPECT_FALSE(open->isFolder(u".hidden"_s));
    EXPECT_FALSE(Folder::open(path(u"missing"_s), error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(Folder::open(folder + u"/.hidden"_s, error));
    EXPECT_EQ(error, std::errc::not_a_directory);
    EXPECT_EQ(::unlink(notUtf8.constData()), 0);
}

} // namespace
} // namespace platform
