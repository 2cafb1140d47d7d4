#include "transferlog/TransferLogKeeper.h"

#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "support/EventLoop.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"
#include "support/SystemCallFailure.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;

namespace {

class TransferLog : public testing::Test {
protected:
    static void appendNumbered(int number)
    {
        appendFerrylaneTransferLog({{.fileName = QString::number(number)}});
    }

    support::PrivateUserFolders home_;
};

FerrylaneTransferLogEntry entry(
    const QString& fileName, const QString& peer, std::optional<qint64> size)
{
    // In local time, as the log is shown.
    return {QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7, 890)).toUTC(), QStringLiteral("Sent"),
        fileName, peer, QStringLiteral("Completed"), size};
}

/// The numbers from `first` to the one before `end`.
QStringList numbers(int first, int end)
{
    QStringList list;
    for (int number = first; number < end; ++number) {
        list << QString::number(number);
    }
    return list;
}

/// A log of files that are named by their numbers, from 0.
void saveNumbered(int count)
{
    QList<FerrylaneTransferLogEntry> entries;
    for (const QString& number : numbers(0, count)) {
        entries << entry(number, QString(), std::nullopt);
    }
    saveFerrylaneTransferLog(entries);
}

QStringList fileNames()
{
    QStringList names;
    for (const auto& entry : loadFerrylaneTransferLog()) {
        names << entry.fileName;
    }
    return names;
}

} // namespace

TEST_F(TransferLog, keepsTheNewestHundred)
{
    saveNumbered(99);
    appendNumbered(99);
    EXPECT_EQ(fileNames(), numbers(0, 100));
    appendNumbered(100);
    EXPECT_EQ(fileNames(), numbers(1, 101));
}

TEST_F(TransferLog, keepsAllWhereThatIsWantedUntilItIsTrimmed)
{
    userSettings().set(ferrylaneTransferLogContinuousKey, true);
    saveNumbered(149);
    appendNumbered(149);
    EXPECT_EQ(fileNames(), numbers(0, 150));

    trimFerrylaneTransferLog();
    EXPECT_EQ(fileNames(), numbers(50, 150));
}

TEST_F(TransferLog, beginsAnewWhenDamagedAndKeepsWhatWasThere)
{
    support::writeFile(ferrylaneTransferLogURL(), "[{\"date\":");
    appendNumbered(7);
    EXPECT_EQ(fileNames(), QStringList(QStringLiteral("7")));
    const QStringList files = support::everythingIn(applicationSupportFolder());
    ASSERT_EQ(files.size(), 2);
    EXPECT_TRUE(files.last().startsWith(u"transfer-log-v1.json.damaged-20"))
        << qPrintable(files.last());
    EXPECT_EQ(support::contentOf(applicationSupportFolder() + u'/' + files.last()), "[{\"date\":");
    EXPECT_EQ(home_.log().count(u" is damaged; it is kept as "), 1);
}

TEST_F(TransferLog, staysAsItIsWhileItCannotBeRead)
{
    saveNumbered(3);
    EXPECT_TRUE(support::runWithFailures({{SYS_read, EIO}}, [] { appendNumbered(3); }));
    EXPECT_EQ(fileNames(), numbers(0, 3));
    EXPECT_EQ(home_.log().count(u"Could not read the transfer log: Input/output error"), 1);
}

TEST(TransferLogLines, areThereForEachEntryNewestFirst)
{
    EXPECT_EQ(ferrylaneTransferLogLines({}), QStringList("No transfers logged yet."_L1));
    // Line breaks in names, which come from others, are shown.
    const QStringList expected{
        u"2026-03-04 05:06:07 \u00b7 Sent \u00b7 n\\new \u00b7 Pix\\u{2028}el \u00b7 Completed "
        "\u00b7 1.5 MB"_s,
        u"2026-03-04 05:06:07 \u00b7 Sent \u00b7 old \u00b7 Completed"_s};
    EXPECT_EQ(ferrylaneTransferLogLines({entry(QStringLiteral("old"), QString(), std::nullopt),
                  entry(QStringLiteral("n\new"), QStringLiteral("Pix\u2028el"), 1'500'000)}),
        expected);
}

TEST_F(TransferLog, isKeptInOrderAndFinished)
{
    QStringList seen;
    int changes = 0;
    {
        TransferLogKeeper keeper;
        QObject context;
        QObject::connect(
            &keeper, &TransferLogKeeper::ferrylaneTransferLogChanged, &context, [&] { ++changes; });
        const auto read = [&](QObject* reader) {
            keeper.read(
                reader,
                [](const QList<FerrylaneTransferLogEntry>& entries) {
                    QStringList names;
                    for (const auto& entry : entries)
                        names << entry.fileName;
                    return names.join(u',');
                },
                [&](const QString& names) { seen << names; });
        };
        const QDateTime before = QDateTime::currentDateTimeUtc();
        keeper.append({.fileName = u"lost"_s});
        keeper.clear();
        for (int i = 0; i < 120; ++i) {
            keeper.append({.fileName = QString::number(i)});
        }
        read(&context);
        auto gone = std::make_unique<QObject>();
        read(gone.get());
        gone.reset();
        EXPECT_TRUE(support::processEventsUntil([&] { return seen.size() == 1; }));
        EXPECT_EQ(seen.first(), numbers(20, 120).join(u','));
        EXPECT_TRUE(support::processEventsUntil([&] { return changes > 0; }));
        const QDateTime date = loadFerrylaneTransferLog().last().date;
        EXPECT_TRUE(before <= date && date <= QDateTime::currentDateTimeUtc());
        keeper.append({.fileName = u"last"_s});
        read(&context);
    }
    EXPECT_EQ(loadFerrylaneTransferLog().last().fileName, u"last"_s);
    QCoreApplication::processEvents();
    EXPECT_EQ(seen.size(), 1) << "nobody is told by a keeper that has gone";
    EXPECT_LT(changes, 60) << "what comes meanwhile is written in one step";
}
