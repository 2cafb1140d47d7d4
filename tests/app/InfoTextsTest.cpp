#include "app/InfoTexts.h"
#include "app/DeviceRows.h"
#include "app/Maintenance.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "pairing/ReceiverKeyStore.h"
#include "platform/Files.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"
#include "transferlog/TransferLog.h"

#include <QFile>
#include <QUrl>
#include <QUrlQuery>

#include <gtest/gtest.h>

#include <limits>

using namespace ferrylane;
using namespace Qt::StringLiterals;

TEST(InfoTexts, sumUpTheTransfers)
{
    const auto ofSizes = [](const QList<std::optional<qint64>>& sizes) {
        QList<FerrylaneTransferLogEntry> entries;
        for (const auto& size : sizes) {
            entries.append({{}, {}, {}, {}, {}, size});
        }
        return transferSummary(entries);
    };
    EXPECT_EQ(ofSizes({}), u"0 \u00B7 0 bytes"_s);
    EXPECT_EQ(ofSizes({1'000'000, std::nullopt, 500'000}), u"3 \u00B7 1.5 MB"_s);
    const qint64 most = std::numeric_limits<qint64>::max();
    EXPECT_EQ(ofSizes({most, most, -5}), ofSizes({most, 0, 0}));
}

TEST(InfoTexts, feedbackComesBackFromItsLink)
{
    const QString typed = u"100 % & more?\nsecond = line #1 \u00E9"_s;
    const QUrl link(feedbackLink(typed + feedbackDetails(7)));
    EXPECT_EQ(link.scheme(), u"mailto"_s);
    const QUrlQuery query(link);
    EXPECT_EQ(query.queryItemValue(u"subject"_s, QUrl::FullyDecoded), u"Ferrylane feedback"_s);
    const QString body = query.queryItemValue(u"body"_s, QUrl::FullyDecoded);
    EXPECT_TRUE(body.startsWith(typed + u"\n\nFerrylane "_s)) << qPrintable(body);
    EXPECT_TRUE(body.endsWith(u"\nTransfers logged: 7"_s)) << qPrintable(body);
}

TEST(DeviceRowsTest, listsPairedThenNearbyByName)
{
    const auto target = [](const QString& name) { return FerrylanePairedTarget{name, {}, {}}; };
    const auto rows = deviceRows({target(u"Office Mac"_s), target(u"alpha"_s), target(u"me"_s)},
        {u"office mac"_s, u"Zeta"_s, u"beta"_s, u"ME"_s}, u"Me"_s);
    QStringList texts;
    for (const DeviceRow& row : rows) {
        texts << row.name + u": "_s + deviceStatusText(row);
    }
    EXPECT_EQ(texts,
        (QStringList{u"alpha: Paired \u00B7 Offline"_s, u"Office Mac: Paired \u00B7 Online"_s,
            u"beta: Not paired"_s, u"Zeta: Not paired"_s}));
}

TEST(Maintenance, resetLeavesReceivedFilesAndForeignSettings)
{
    const support::PrivateUserFolders folders;
    static_cast<void>(loadOrCreateFerrylaneKey());
    userSettings().set(ferrylaneDeviceNameKey, u"x"_s);
    userSettings().set(u"Other"_s, u"kept"_s);
    const QString received = receiveDir() + u"/file"_s;
    ASSERT_FALSE(platform::appendToFile(received, {}, 0600));

    removeSettingsAndPairings();
    EXPECT_EQ(userSettings().keys(), QStringList(u"Other"_s));
    EXPECT_FALSE(QFile::exists(ferrylaneKeyURL()));
    EXPECT_TRUE(QFile::exists(received));
}

TEST(Maintenance, tellsAFolderThatCannotBeWritten)
{
    const support::PrivateUserFolders folders;
    EXPECT_EQ(receiveFolderProblem(folders.below(u"new/one"_s)), QString());
    EXPECT_TRUE(QFile::exists(folders.below(u"new/one"_s)));
    EXPECT_NE(receiveFolderProblem(u"/proc/self"_s), QString());
    ASSERT_FALSE(platform::appendToFile(folders.below(u"file"_s), {}, 0600));
    EXPECT_NE(receiveFolderProblem(folders.below(u"file"_s)), QString());
}
