#include "core/Log.h"

#include "core/StoragePaths.h"
#include "support/PrivateUserFolders.h"
#include "support/TestFiles.h"

#include <QDateTime>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include <sys/stat.h>

using namespace ferrylane;

namespace {

QString logPath()
{
    return logFolder() + QStringLiteral("/ferrylane.log");
}

QString logText()
{
    return QString::fromUtf8(support::contentOf(logPath()));
}

/// The lines without their ends; the last element is what follows the last end.
QStringList logLines()
{
    return logText().split(u'\n');
}

} // namespace

TEST(Log, beginsWithItsFolderAndOneLine)
{
    const support::PrivateUserFolders home;
    const mode_t umaskBefore = ::umask(0);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    flLog(QStringLiteral("Größe \U0001F600"));
    const qint64 after = QDateTime::currentSecsSinceEpoch();
    ::umask(umaskBefore);

    static const QRegularExpression form(
        QStringLiteral("^(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ)  (.*)\\n$"));
    const auto match = form.match(logText());
    ASSERT_TRUE(match.hasMatch()) << logText().toStdString();
    EXPECT_EQ(match.captured(2), QStringLiteral("Größe \U0001F600"));
    const qint64 time = QDateTime::fromString(match.captured(1), Qt::ISODate).toSecsSinceEpoch();
    EXPECT_TRUE(before <= time && time <= after) << match.captured(1).toStdString();
    EXPECT_EQ(support::modeOf(logPath()), 0600U);
}

TEST(Log, isOneLineACall)
{
    const support::PrivateUserFolders home;
    flLog(QStringLiteral("name\n2026-01-01T00:00:00Z  forged\r\u2028\u0085"));
    const QStringList lines = logLines();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].endsWith(u"  name\\n2026-01-01T00:00:00Z  forged\\r\\u{2028}\\u{85}"))
        << lines[0].toStdString();
}

TEST(Log, ignoresThatItCannotBeWritten)
{
    const support::PrivateUserFolders home;
    support::writeFile(home.state());
    flLog(QStringLiteral("lost"));
    EXPECT_EQ(QFile(home.state()).size(), 0);

    ASSERT_TRUE(QFile::remove(home.state()));
    flLog(QStringLiteral("kept"));
    EXPECT_EQ(logLines().size(), 2);
}

TEST(Log, keepsTheLinesOfManyThreadsWhole)
{
    constexpr int threadCount = 8;
    constexpr int linesEach = 100;
    const support::PrivateUserFolders home;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (int line = 0; line < linesEach; ++line) {
                flLog(QStringLiteral("%1 %2 %3").arg(thread).arg(line).arg(QString(200, u'x')));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    QStringList lines = logLines();
    ASSERT_EQ(lines.size(), threadCount * linesEach + 1);
    EXPECT_TRUE(lines.takeLast().isEmpty());
    static const QRegularExpression form(QStringLiteral("^[-0-9T:]+Z  (\\d+) (\\d+) x{200}$"));
    std::vector<int> next(threadCount, 0);
    for (const QString& line : lines) {
        const auto match = form.match(line);
        ASSERT_TRUE(match.hasMatch()) << line.toStdString();
        EXPECT_EQ(match.captured(2).toInt(), next.at(match.captured(1).toUInt())++);
    }
    EXPECT_TRUE(std::is_sorted(lines.begin(), lines.end(),
        [](const QString& a, const QString& b) { return a.left(20) < b.left(20); }));
}
