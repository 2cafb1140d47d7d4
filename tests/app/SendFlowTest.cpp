#include "app/SendFlow.h"

#include "app/TransferTexts.h"
#include "core/Base64Url.h"
#include "pairing/PairedTargets.h"
#include "support/EventLoop.h"
#include "support/FakePhone.h"
#include "support/PrivateUserFolders.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using support::FakePhone;
using support::httpAnswer;

namespace {

class FakeViews final : public SendFlow::Views {
public:
    SendChoice chooseReceiver(const QString& text, const QList<SendChoice>& choices) override
    {
        question = text;
        offered.clear();
        for (const SendChoice& choice : choices) {
            offered.append(choice.text);
        }
        return choices[std::min(answer, choices.size() - 1)];
    }
    void alert(const QString& title, const QString& text) override
    {
        alerts.append(title + u": "_s + text);
    }
    void setSendStatus(const QString& text, bool isShown) override
    {
        if (isShown && (statuses.isEmpty() || statuses.last() != text)) statuses.append(text);
        statusShown = isShown;
    }
    void setSendProgress(double percent, bool isShown) override
    {
        progress = percent;
        progressShown = isShown;
    }

    qsizetype answer = 0;
    QString question;
    QStringList offered;
    QStringList alerts;
    QStringList statuses;
    double progress = 0;
    bool progressShown = false;
    bool statusShown = true;
};

class SendFlowTest : public ::testing::Test {
protected:
    void pair(const QString& name, const FakePhone& phone)
    {
        EXPECT_TRUE(saveFerrylanePairedTarget(
            {name, phone.baseURL(), base64URLEncode(support::testKey().bytes())}));
    }

    void waitForEnd()
    {
        EXPECT_TRUE(flow_->isSending());
        EXPECT_TRUE(busy_);
        EXPECT_TRUE(support::processEventsUntil([this] { return !flow_->isSending(); }));
        EXPECT_FALSE(busy_);
    }

    void log(const FerrylaneTransfer& transfer)
    {
        logged_.append(QStringList{transfer.direction, transfer.fileName, transfer.peer,
            transfer.result, QString::number(transfer.size.value_or(-1))}
                           .join(u' '));
    }

    [[nodiscard]] const QStringList& logged() const { return logged_; }

    support::PrivateUserFolders folders_;
    std::unique_ptr<platform::TcpNetwork> network_ = platform::TcpNetwork::create("test");
    FakeViews views_;
    QStringList visible_;
    bool busy_ = false;
    QStringList logged_;
    std::optional<FerrylanePairedTarget> pairs_; ///< what pairing yields
    std::unique_ptr<SendFlow> flow_ = std::make_unique<SendFlow>(SendFlow::Collaborators{*network_,
        views_, [this](const FerrylaneTransfer& transfer) { log(transfer); },
        [this] { return visible_; },
        [this](const SendFlow::PairedHandler& paired) {
            if (pairs_) paired(*pairs_);
        },
        [this](bool busy) { busy_ = busy; }});
};

void takeFile(FakePhone::Upload& upload)
{
    static_cast<void>(upload.body());
    upload.answer(httpAnswer("200 OK", "OK SHA256"));
}

} // namespace

TEST_F(SendFlowTest, asksSendsAndRecords)
{
    FakePhone phone(takeFile);
    pair(u"Office phone"_s, phone);
    visible_ = {u"office PHONE"_s, u"Tablet"_s};
    const QString a = folders_.file(u"a.txt"_s, "12345");
    const QString empty = folders_.file(u"empty"_s, {});
    flow_->chooseReceiverAndSend({a, folders_.below(QString()), empty});
    EXPECT_EQ(
        views_.question, u"2 files selected. Choose a paired device, or pair a visible one."_s);
    EXPECT_EQ(views_.offered,
        (QStringList{
            u"Send to Office phone"_s, u"Pair Tablet"_s, u"Pair device with QR"_s, u"Cancel"_s}));
    waitForEnd();
    EXPECT_EQ(views_.statuses.first(), u"Connecting to Office phone\u2026"_s);
    EXPECT_TRUE(views_.statuses.contains(u"Sending 2/2: empty  100% \u00B7 0.0 MB/s"_s))
        << qPrintable(views_.statuses.join(u'\n'));
    EXPECT_EQ(views_.statuses.last(), u"Sent 2 files to Office phone"_s);
    EXPECT_EQ(views_.progress, 100);
    EXPECT_EQ(logged(),
        (QStringList{
            u"Sent a.txt Office phone Completed 5"_s, u"Sent empty Office phone Completed 0"_s}));
    EXPECT_TRUE(support::processEventsUntil([this] { return !views_.progressShown; }));
    EXPECT_FALSE(views_.statusShown);
}

TEST_F(SendFlowTest, sendsToWhoeverHasJustBeenPaired)
{
    FakePhone phone(takeFile);
    pair(u"Tablet"_s, phone);
    pairs_ = loadFerrylanePairedTargets().first();
    forgetFerrylanePairedTarget();
    EXPECT_TRUE(saveFerrylanePairedTarget(*pairs_));
    views_.answer = 1; // by QR
    flow_->chooseReceiverAndSend({folders_.file(u"a"_s, "1")});
    waitForEnd();
    EXPECT_EQ(views_.statuses.last(), u"Sent 1 file to Tablet"_s);
}

TEST_F(SendFlowTest, tellsWhyItFailed)
{
    FakePhone phone([](FakePhone::Upload& upload) {
        static_cast<void>(upload.body());
        upload.answer(httpAnswer("400 Bad Request", "Authentication failed"));
    });
    pair(u"Tablet"_s, phone);
    flow_->sendFilesToPairedPhone({folders_.file(u"a"_s, "1"), folders_.below(u"missing"_s)});
    waitForEnd();
    const QString reason = u"Phone returned 400: Authentication failed"_s;
    EXPECT_EQ(views_.statuses.last(), u"Send failed: "_s + reason);
    EXPECT_EQ(views_.alerts, QStringList{u"Transfer failed: "_s + reason});
    EXPECT_FALSE(views_.progressShown);
    EXPECT_EQ(
        logged(), (QStringList{u"Sent a Tablet Failed 1"_s, u"Sent missing Tablet Failed -1"_s}));
}

TEST_F(SendFlowTest, stopsWithoutAnAlert)
{
    FakePhone phone([](FakePhone::Upload& upload) { upload.stall(); });
    pair(u"Tablet"_s, phone);
    const QString big = folders_.file(u"a"_s, support::testContent(20 * 1048576));
    flow_->sendFilesToPairedPhone({big});
    flow_->sendFilesToPairedPhone({big});
    EXPECT_EQ(views_.alerts,
        QStringList{u"Transfer already running: Wait for the current send to finish."_s});
    flow_->cancel();
    waitForEnd();
    EXPECT_EQ(views_.statuses.last(), u"Transfer stopped"_s);
    EXPECT_EQ(views_.alerts.size(), 1);

    flow_->sendFilesToPairedPhone({big});
    flow_->cancelAndWait();
    EXPECT_FALSE(busy_);
    EXPECT_EQ(logged().size(), 2);
    QCoreApplication::processEvents();
    EXPECT_EQ(logged(), QStringList(2, u"Sent a Tablet Failed 20971520"_s));
}

TEST_F(SendFlowTest, needsFilesAndAPhone)
{
    flow_->chooseReceiverAndSend({folders_.below(QString())});
    EXPECT_EQ(views_.question, QString());
    flow_->sendFilesToPairedPhone({folders_.file(u"a"_s, "1")});
    EXPECT_EQ(views_.alerts,
        QStringList{u"No paired phone: Pair an Android device before sending files."_s});
    EXPECT_FALSE(flow_->isSending());
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
