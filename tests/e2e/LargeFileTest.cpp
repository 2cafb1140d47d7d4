#include "ReceiverTest.h"

#include "support/Sanitizers.h"
#include "support/TestFiles.h"

#include <QFile>

#include <vector>

using namespace e2e;

namespace {

// More than a signed 32-bit number holds; what depends on the size alone is seen without
// sanitizers.
constexpr qint64 largeSize = support::isSanitized ? qint64{64} << 20 : qint64{2} << 30;

/// A file of zeros, which take no space, with some data here and there.
void makeLargeFile(const QString& path)
{
    support::writeFile(path, "");
    ASSERT_TRUE(QFile::resize(path, largeSize));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QByteArray data = support::testContent(100'000);
    for (const qint64 at : {qint64{0}, largeSize / 3, largeSize - data.size()}) {
        ASSERT_TRUE(file.seek(at));
        ASSERT_EQ(file.write(data), data.size());
    }
}

bool areEqual(const QString& a, const QString& b)
{
    QFile first(a);
    QFile second(b);
    if (!first.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return false;
    if (!second.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return false;
    std::vector<char> left(1 << 20);
    std::vector<char> right(1 << 20);
    while (!first.atEnd() || !second.atEnd()) {
        const qint64 count = first.read(left.data(), std::ssize(left));
        if (count <= 0 || second.read(right.data(), std::ssize(right)) != count) return false;
        if (std::memcmp(left.data(), right.data(), static_cast<std::size_t>(count)) != 0) {
            return false;
        }
    }
    return true;
}

class LargeFile : public ReceiverTest {};

} // namespace

TEST_F(LargeFile, arrivesWhole)
{
    const QString file = home_.ownFile(u"large.bin"_s);
    makeLargeFile(file);
    const PhoneRun run = phone({u"upload"_s, u"--local"_s, u"--name=Pixel 8"_s, file});
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    EXPECT_TRUE(areEqual(file, home_.receiveFolder() + u"/Pixel 8/large.bin"_s));
    expectNoTrace();
    RecordProperty("phone", run.output.toStdString());
    EXPECT_TRUE(program_.log().contains(
        "  Secure V4 received " + QByteArray::number(largeSize) + " bytes to "));
}
