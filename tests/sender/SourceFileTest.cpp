#include "sender/SourceFile.h"

#include "sender/SendError.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <functional>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;

namespace {

class SourceFileTest : public ::testing::Test {
protected:
    [[nodiscard]] QString path() const { return dir_.filePath(QStringLiteral("a b.bin")); }

    void append(const QByteArray& bytes) const
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::Append));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    QTemporaryDir dir_;
    std::array<std::byte, 4> buffer_{};
};

void expectFileError(const std::function<void()>& action)
{
    try {
        action();
        ADD_FAILURE() << "no failure";
    } catch (const SendError& error) {
        EXPECT_EQ(error.domain(), SendError::Domain::file);
    }
}

} // namespace

TEST_F(SourceFileTest, givesTheWholeFileInPieces)
{
    append("0123456789");
    SourceFile file(path());
    EXPECT_EQ(file.name(), u"a b.bin"_s);
    EXPECT_EQ(file.size(), 10);
    QByteArray content;
    while (const std::size_t count = file.next(buffer_)) {
        content += platform::toByteArray(platform::ByteView(buffer_).first(count));
    }
    EXPECT_EQ(content, "0123456789");
}

TEST_F(SourceFileTest, failsWhenTheFileBecomesShorter)
{
    append("0123456789");
    SourceFile file(path());
    EXPECT_EQ(file.next(buffer_), 4U);
    ASSERT_TRUE(QFile::resize(path(), 7));
    expectFileError([&] { static_cast<void>(file.next(buffer_)); });
}

TEST_F(SourceFileTest, failsWhenTheFileBecomesLonger)
{
    append("01234567");
    SourceFile file(path());
    EXPECT_EQ(file.next(buffer_), 4U);
    append("8");
    EXPECT_EQ(file.next(buffer_), 4U);
    expectFileError([&] { static_cast<void>(file.next(buffer_)); });
}

TEST_F(SourceFileTest, mayHaveANameThatIsNoText)
{
    const auto path = platform::FilePath::fromNative(QFile::encodeName(dir_.path()) + "/a\xff.txt");
    append("content");
    ASSERT_EQ(rename(QFile::encodeName(this->path()).constData(), path.native().constData()), 0);
    EXPECT_EQ(path.size(), 7);
    SourceFile file(path);
    EXPECT_EQ(file.name(), u"a\ufffd.txt"_s);
    EXPECT_EQ(file.next(buffer_), 4U);
}

TEST_F(SourceFileTest, takesRegularFilesOnly)
{
    expectFileError([this] { const SourceFile missing(path()); });
    EXPECT_THROW(SourceFile(dir_.path()), SendError);
    // Opening a FIFO would wait for a writer for ever.
    ASSERT_EQ(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    EXPECT_THROW(SourceFile{path()}, SendError);
}
