#include "transferlog/TransferLogKeeper.h"

#include "core/Notifications.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "support/ManualQueue.h"
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
    TransferLog()
        : changes_(notifications_.observe(FerrylaneTransferLogChanged, [this](const auto& payload) {
            EXPECT_TRUE(std::holds_alternative<std::monostate>(payload));
            ++changeCount_;
        }))
    {
    }

    void append(const FerrylaneTransfer& transfer)
    {
        appendFerrylaneTransferLog(transfer, notifications_);
    }

    void appendNumbered(int number) { append({.fileName = QString::number(number)}); }

    int changeCount()
    {
        mainQueue_.runAll();
        return changeCount_;
    }

    support::PrivateUserFolders home_;
    support::ManualQueue mainQueue_;
    platform::NotificationCenter notifications_{mainQueue_};

private:
    int changeCount_ = 0;
    platform::NotificationCenter::Observation changes_;
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

TEST_F(TransferLog, getsAnEntryWithTheTimeAndTellsSo)
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    append({.direction = QStringLiteral("Sent"),
        .fileName = QStringLiteral("b"),
        .peer = QStringLiteral("Pixel"),
        .result = QStringLiteral("Failed")});
    const QDateTime after = QDateTime::currentDateTimeUtc();
    EXPECT_EQ(changeCount(), 1);

    const auto entries = loadFerrylaneTransferLog();
    ASSERT_EQ(entries.size(), 1);
    const QDateTime date = entries[0].date;
    EXPECT_TRUE(before <= date && date <= after);
    EXPECT_EQ(entries[0],
        (FerrylaneTransferLogEntry{date, QStringLiteral("Sent"), QStringLiteral("b"),
            QStringLiteral("Pixel"), QStringLiteral("Failed"), std::nullopt}));
}

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
    EXPECT_EQ(changeCount(), 1) << "trimming tells nobody";
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
    EXPECT_TRUE(support::runWithFailures({{SYS_read, EIO}}, [this] { appendNumbered(3); }));
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

TEST(TransferLogKeeper, doesAllInOrderAndFinishesIt)
{
    const support::PrivateUserFolders folders;
    support::ManualQueue mainQueue;
    platform::NotificationCenter notifications(mainQueue);
    QStringList seen;
    {
        TransferLogKeeper keeper(mainQueue, notifications);
        keeper.append({.fileName = u"cleared"_s});
        keeper.clear();
        for (int i = 0; i < 3; ++i) {
            keeper.append({.fileName = QString::number(i)});
        }
        keeper.read([&](const QList<FerrylaneTransferLogEntry>& entries) {
            return [&seen, name = entries.last().fileName] { seen << name; };
        });
        EXPECT_TRUE(mainQueue.waitFor([&] { return !seen.isEmpty(); }));
        keeper.append({.fileName = u"last"_s});
        keeper.read([&](const auto& /*entries*/) { return [&seen] { seen << u"too late"_s; }; });
    }
    mainQueue.runAll();
    EXPECT_EQ(seen, QStringList(u"2"_s));
    EXPECT_EQ(loadFerrylaneTransferLog().last().fileName, u"last"_s);
    EXPECT_EQ(loadFerrylaneTransferLog().size(), 4);
}
