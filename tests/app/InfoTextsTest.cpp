#include "app/flows/Maintenance.h"
#include "app/flows/ReceiverChooser.h"
#include "app/windows/DevicesPanel.h"
#include "app/windows/InfoPanel.h"
#include "app/windows/TransferTexts.h"
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

TEST(SendChoices, areSortedAndLeaveThisComputerOut)
{
    const auto target = [](const QString& name) { return FerrylanePairedTarget{name, {}, name}; };
    QStringList texts;
    for (const SendChoice& choice :
        sendChoices({target(u"zeta"_s), target(u"MY PC"_s), target(u"Alpha"_s)},
            {u"beta"_s, u"ALPHA"_s, u"my pc"_s, u"Anna"_s}, u"My PC"_s)) {
        texts.append(choice.text);
    }
    EXPECT_EQ(texts,
        (QStringList{u"Send to Alpha"_s, u"Send to zeta"_s, u"Pair Anna"_s, u"Pair beta"_s,
            u"Pair device with QR"_s, u"Cancel"_s}));
    EXPECT_EQ(
        sendQuestionText(1), u"1 file selected. Choose a paired device, or pair a visible one."_s);
    EXPECT_EQ(
        sendQuestionText(2), u"2 files selected. Choose a paired device, or pair a visible one."_s);
}

TEST(TransferTexts, sayHowSendingGetsOn)
{
    using Stage = TransferState::Stage;
    TransferState state{.fileName = u"IMG_0042.jpg"_s,
        .peer = u"Pixel 8"_s,
        .fileIndex = 1,
        .fileCount = 3,
        .fraction = 0.567,
        .speed = 4.21,
        .reason = u"BU\nSY"_s};
    const std::pair<Stage, QString> rows[]{
        {Stage::connecting, u"Connecting to Pixel 8…"_s},
        {Stage::waiting, u"Device transferring — waiting until it finishes…"_s},
        {Stage::running, u"Sending 2/3: IMG_0042.jpg  57% · 4.2 MB/s"_s},
        {Stage::completed, u"Sent 3 files to Pixel 8"_s},
        {Stage::failed, u"Send failed: BU\\nSY"_s},
        {Stage::stopped, u"Transfer stopped"_s},
    };
    for (const auto& [stage, text] : rows) {
        state.stage = stage;
        EXPECT_EQ(sendStatusText(state), text);
    }
    EXPECT_EQ(receiveStatusText(state), u"56.7%  4.2 MB/s"_s);
    EXPECT_EQ(progressWindowText(state), u"56.7%   4.2 MB/s"_s);
}

TEST(TransferTexts, listTheNewestTransfersFirst)
{
    const QDateTime date = QDateTime::fromString(u"2026-11-24T14:05:09"_s, Qt::ISODate);
    QList<FerrylaneTransferLogEntry> entries{
        {date, u"Received"_s, u"old"_s, {}, u"Completed"_s, {}},
        {date, u"Sent"_s, u"a\nb"_s, u"Pixel"_s, u"Failed"_s, {}},
    };
    auto rows = historyRows(entries);
    EXPECT_EQ(rows[0], (HistoryRow{u"14:05  Sent  a\nb"_s, false}));
    EXPECT_EQ(rows[2], (HistoryRow{u"\u2014"_s, true}));
    entries.append({date, u"Received"_s, u"x"_s, {}, u"Completed"_s, 1'200'000});
    entries.append({date, u"Received"_s, u"y"_s, {}, u"Completed"_s, 1});
    rows = historyRows(entries);
    EXPECT_EQ(rows[0].text, u"14:05  Received  y \u00B7 1 byte"_s);
    EXPECT_EQ(rows[1].text, u"14:05  Received  x \u00B7 1.2 MB"_s);
    EXPECT_EQ(rows[2].text, u"14:05  Sent  a\nb"_s);
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
