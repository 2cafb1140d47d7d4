#include "sender/SourceFile.h"

#include "sender/SendError.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <array>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;

TEST(SourceFile, mayHaveANameThatIsNoText)
{
    const QTemporaryDir folder;
    const auto path
        = platform::FilePath::fromNative(QFile::encodeName(folder.path()) + "/a\xff.txt");
    support::writeFile(folder.filePath(u"a"_s), "content");
    ASSERT_EQ(
        ::rename((QFile::encodeName(folder.path()) + "/a").constData(), path.native().constData()),
        0);
    EXPECT_EQ(path.size(), 7);
    SourceFile file(path);
    EXPECT_EQ(file.name(), u"a\ufffd.txt"_s);
    std::array<std::byte, 4> buffer{};
    EXPECT_EQ(file.next(buffer), 4U);
    // QTemporaryDir does not find it.
    EXPECT_EQ(::unlink(path.native().constData()), 0);
}

TEST(SourceFile, isNoFifo)
{
    // Opening one would wait for a writer for ever.
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"fifo"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_THROW(SourceFile{path}, SendError);
}
