#include "service/FerrylaneService.h"

#include "core/Encodings.h"
#include "core/Settings.h"
#include "pairing/ReceiverKeyStore.h"
#include "support/EventLoop.h"
#include "support/FakePhone.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"
#include "support/TcpClient.h"
#include "support/UploadStream.h"

#include <QTcpServer>
#include <QTest>

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using support::FakePhone;
using support::httpAnswer;

using support::processEventsUntil;
using Stage = TransferState::Stage;

namespace {

bool isListening()
{
    return support::isListening();
}

class FerrylaneServiceTest : public ::testing::Test {
protected:
    FerrylaneService& begin()
    {
        service_.emplace();
        QObject::connect(&*service_, &FerrylaneService::sendChanged,
            [this](const TransferState& state) { states_ << state; });
        QObject::connect(&*service_, &FerrylaneService::serviceFailed,
            [this](const QString& text) { failures_ << text; });
        service_->begin();
        return *service_;
    }

    [[nodiscard]] static FerrylanePairedTarget targetOf(const FakePhone& phone)
    {
        return {u"Office phone"_s, phone.baseURL(), base64URLEncode(support::testKey().bytes())};
    }

    /// Sends, and waits for the end; the state in which it ended.
    TransferState send(const FakePhone& phone, const platform::FilePaths& files)
    {
        service_->send(files, targetOf(phone));
        EXPECT_TRUE(processEventsUntil([this] { return !service_->isSending(); }));
        return states_.last();
    }

    /// The log's entries, as "Sent a.txt Office phone Completed 5".
    [[nodiscard]] QStringList logged()
    {
        std::optional<QStringList> lines;
        service_->transferLog().read(
            &*service_,
            [](const QList<FerrylaneTransferLogEntry>& entries) {
                QStringList texts;
                for (const auto& entry : entries) {
                    texts << QStringList{entry.direction, entry.fileName, entry.peer, entry.result,
                        QString::number(entry.size.value_or(-1))}
                                 .join(u' ');
                }
                return texts;
            },
            [&](const QStringList& texts) { lines = texts; });
        EXPECT_TRUE(processEventsUntil([&] { return lines.has_value(); }));
        return lines.value_or(QStringList());
    }

    support::PrivateUserFolders folders_;
    QList<TransferState> states_; ///< of sending
    QStringList failures_;
    std::optional<FerrylaneService> service_;
};

void takeFile(FakePhone::Upload& upload)
{
    static_cast<void>(upload.body());
    upload.answer(httpAnswer("200 OK", "OK SHA256"));
}

} // namespace

TEST_F(FerrylaneServiceTest, beginsAsTheSettingsSayAndRemembersItsSwitches)
{
    begin();
    EXPECT_TRUE(processEventsUntil(isListening));
    EXPECT_TRUE(service_->pairingLink().startsWith(u"http"_s))
        << qPrintable(service_->pairingLink());
    service_->setServiceRunning(false);
    EXPECT_FALSE(isListening());
    service_->setVisible(false);

    begin();
    EXPECT_FALSE(service_->serviceRunning());
    EXPECT_FALSE(service_->visible());
    EXPECT_FALSE(isListening());
    service_->setServiceRunning(true);
    EXPECT_TRUE(processEventsUntil(isListening));
    EXPECT_TRUE(processEventsUntil([this] { return folders_.log().contains(u"visible=false"_s); }));
    EXPECT_TRUE(userSettings().boolean(ferrylaneServiceRunningKey, false));
}

TEST_F(FerrylaneServiceTest, switchesItselfOff)
{
    begin();
    for (const qint64 never : {qint64(0), qint64(-5), std::numeric_limits<qint64>::max()}) {
        service_->setAutoOffSeconds(never);
        QTest::qWait(20);
        EXPECT_TRUE(service_->serviceRunning());
    }
    service_->setAutoOffSeconds(1);
    QTest::qWait(500);
    EXPECT_TRUE(service_->serviceRunning());
    EXPECT_TRUE(processEventsUntil([this] { return !service_->serviceRunning(); }));
    EXPECT_FALSE(userSettings().boolean(ferrylaneServiceRunningKey, true));
}

TEST_F(FerrylaneServiceTest, aPortThatIsTakenSwitchesItOffForNowAndSaysWhoHasIt)
{
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::Any, port));
    begin();
    ASSERT_TRUE(processEventsUntil([this] { return !failures_.isEmpty(); }));
    EXPECT_EQ(failures_,
        QStringList(u"TCP port 8788 is in use by another program.\n\nEnd that program, then switch "
                    "the service on again. Sending files works meanwhile."_s));
    EXPECT_FALSE(service_->serviceRunning());
    EXPECT_TRUE(userSettings().boolean(ferrylaneServiceRunningKey, true));

    other.close();
    service_->setServiceRunning(true);
    EXPECT_TRUE(processEventsUntil(isListening));
    EXPECT_EQ(service_->faultText(), QString());
    EXPECT_EQ(failures_.size(), 1);
}

TEST_F(FerrylaneServiceTest, sendsAndRecords)
{
    FakePhone phone(takeFile);
    begin();
    const auto end = send(phone, {folders_.file(u"a.txt"_s, "12345"), folders_.file(u"b"_s, {})});
    EXPECT_EQ(states_.first().stage, Stage::connecting);
    EXPECT_EQ(end.stage, Stage::completed);
    EXPECT_EQ(end.fileCount, 2);
    EXPECT_EQ(end.fraction, 1);
    EXPECT_EQ(logged(),
        (QStringList{
            u"Sent a.txt Office phone Completed 5"_s, u"Sent b Office phone Completed 0"_s}));
}

TEST_F(FerrylaneServiceTest, tellsWhySendingFailed)
{
    FakePhone phone([](FakePhone::Upload& upload) {
        static_cast<void>(upload.body());
        upload.answer(httpAnswer("400 Bad Request", "Authentication failed"));
    });
    begin();
    const auto end = send(phone, {folders_.file(u"a"_s, "1"), folders_.below(u"missing"_s)});
    EXPECT_EQ(end.stage, Stage::failed);
    EXPECT_EQ(end.reason, u"Phone returned 400: Authentication failed"_s);
    EXPECT_EQ(logged(),
        (QStringList{u"Sent a Office phone Failed 1"_s, u"Sent missing Office phone Failed -1"_s}));
}

TEST_F(FerrylaneServiceTest, refusesPhonesWhileItSendsAndCutsSendingOff)
{
    FakePhone phone([](FakePhone::Upload& upload) { upload.stall(); });
    const platform::FilePaths big{folders_.file(u"a"_s, support::testContent(20 * 1048576))};
    begin();
    ASSERT_TRUE(processEventsUntil(isListening));
    service_->send(big, targetOf(phone));
    ASSERT_TRUE(processEventsUntil([&] { return phone.uploadCount() == 1; }));
    const QByteArray question = "GET /transfer-status HTTP/1.1\r\n\r\n";
    EXPECT_EQ(support::summary(support::answerTo(question)), "409 Conflict|BUSY");
    service_->setServiceRunning(false);
    EXPECT_TRUE(processEventsUntil([this] { return !service_->isSending(); }));
    EXPECT_EQ(states_.last().stage, Stage::stopped);

    service_->setServiceRunning(true);
    service_->send(big, targetOf(phone));
    service_->end();
    EXPECT_EQ(states_.last().stage, Stage::stopped);
    EXPECT_EQ(logged(), QStringList(2, u"Sent a Office phone Failed 20971520"_s));
}

TEST_F(FerrylaneServiceTest, tellsOfWhatIsReceivedAndStopped)
{
    begin();
    ASSERT_TRUE(processEventsUntil(isListening));
    QStringList told;
    QObject::connect(&*service_, &FerrylaneService::ferrylaneStarted,
        [&](const TransferState& state) { told << u"started "_s + state.fileName; });
    QObject::connect(&*service_, &FerrylaneService::ferrylaneReceived,
        [&](const ReceivedFile& file) { told << u"received "_s + file.name(); });
    QObject::connect(
        &*service_, &FerrylaneService::ferrylaneStopped, [&] { told << u"stopped"_s; });
    const platform::SecretKey key = loadOrCreateFerrylaneKey();
    const QByteArray request
        = support::uploadRequest(key, support::testTransfer(5), support::testContent(5));
    EXPECT_EQ(support::summary(support::answerTo(request)), "200 OK|OK SHA256");
    EXPECT_TRUE(processEventsUntil([&] { return told.size() == 1; }));

    support::TcpClient client;
    client.send(request.chopped(60)); // the data record is whole
    EXPECT_TRUE(processEventsUntil([&] { return told.size() == 2; }));
    service_->stopCurrentTransfer();
    EXPECT_EQ(told, (QStringList{u"received photo.jpg"_s, u"started photo.jpg"_s, u"stopped"_s}));
    EXPECT_EQ(client.receiveAll(), "");
    EXPECT_EQ(logged(), QStringList(u"Received photo.jpg  Completed 5"_s));
}
