#include "app/AppDelegate.h"

#include "Controls.h"
#include "core/Encodings.h"
#include "pairing/PairedTargets.h"
#include "pairing/ReceiverKeyStore.h"
#include "support/EventLoop.h"
#include "support/FakePhone.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"
#include "support/UploadStream.h"

#include <QApplication>
#include <QTimer>

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using support::FakePhone;
using support::processEventsUntil;

namespace {

/// The whole program, with windows on a screen in memory. Its dialogs are answered by `answers_`.
class AppDelegateTest : public ::testing::Test {
protected:
    AppDelegateTest()
    {
        dialogTimer_.callOnTimeout([this] { answerDialog(); });
        dialogTimer_.start();
        delegate_.applicationDidFinishLaunching();
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (auto* const panel = dynamic_cast<MainPanel*>(window)) panel_ = panel;
        }
    }

    void answerDialog()
    {
        const QWidget* const dialog = QApplication::activeModalWidget();
        if (!dialog) return;
        for (const QLabel* const label : dialog->findChildren<QLabel*>()) {
            dialogs_ << label->text();
        }
        ASSERT_FALSE(answers_.isEmpty()) << qPrintable(dialogs_.join(u'\n'));
        app_test::buttonNamed(*dialog, answers_.takeFirst()).click();
    }

    void pair(const FakePhone& phone) const
    {
        ASSERT_TRUE(saveFerrylanePairedTarget(
            {u"Office phone"_s, phone.baseURL(), base64URLEncode(support::testKey().bytes())}));
    }

    [[nodiscard]] bool says(const QString& text) const
    {
        const auto labels = panel_->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->isVisible() && label->text().endsWith(text);
        });
    }

    support::PrivateUserFolders folders_;
    QStringList answers_;
    QStringList dialogs_; ///< their texts
    QTimer dialogTimer_;
    FerrylaneService service_;
    AppDelegate delegate_{service_};
    MainPanel* panel_ = nullptr;
};

} // namespace

TEST_F(AppDelegateTest, sendsDroppedFilesToTheChosenPhone)
{
    FakePhone phone([](FakePhone::Upload& upload) {
        static_cast<void>(upload.body());
        upload.answer(support::httpAnswer("200 OK", "OK SHA256"));
    });
    Q_EMIT panel_->filesDropped({folders_.below(QString())});
    EXPECT_EQ(dialogs_, QStringList()) << "there is nothing to send but a folder";
    pair(phone);
    answers_ = {u"Send to Office phone"_s};
    Q_EMIT panel_->filesDropped({folders_.below(QString()), folders_.file(u"a.txt"_s, "12345")});
    EXPECT_EQ(dialogs_,
        (QStringList{
            u"Send to"_s, u"1 file selected. Choose a paired device, or pair a visible one."_s}));
    EXPECT_TRUE(processEventsUntil([this] { return says(u"Sent 1 file to Office phone"_s); }));
    EXPECT_TRUE(processEventsUntil([this] { return !says(u"Sent 1 file to Office phone"_s); }));
}

TEST_F(AppDelegateTest, tellsWhySendingFailed)
{
    FakePhone phone([](FakePhone::Upload& upload) {
        static_cast<void>(upload.body());
        upload.answer(support::httpAnswer("400 Bad Request", "Authentication failed"));
    });
    pair(phone);
    answers_ = {u"Send to Office phone"_s, u"OK"_s};
    Q_EMIT panel_->filesDropped({folders_.file(u"a.txt"_s, "12345")});
    const QString reason = u"Phone returned 400: Authentication failed"_s;
    EXPECT_TRUE(processEventsUntil([&] { return says(u"Send failed: "_s + reason); }));
    EXPECT_TRUE(processEventsUntil([this] { return answers_.isEmpty(); }));
    EXPECT_EQ(dialogs_.last(2), (QStringList{u"Transfer failed"_s, reason}));
}

TEST_F(AppDelegateTest, showsWhatIsReceived)
{
    ASSERT_TRUE(processEventsUntil([] { return support::isListening(); }));
    const QByteArray request = support::uploadRequest(
        loadOrCreateFerrylaneKey(), support::testTransfer(5), support::testContent(5));
    EXPECT_EQ(support::summary(support::answerTo(request)), "200 OK|OK SHA256");
    EXPECT_TRUE(processEventsUntil(
        [this] { return panel_->windowTitle() == u"Ferrylane \u2014 Received photo.jpg"_s; }));
    EXPECT_TRUE(
        processEventsUntil([this] { return says(u"  Received  photo.jpg \u00B7 5 bytes"_s); }));
}

TEST_F(AppDelegateTest, offersItsMenuInThePanel)
{
    QStringList texts;
    for (const QAction* const action : panel_->actions()) {
        texts << action->text() + action->shortcut().toString(QKeySequence::PortableText);
    }
    EXPECT_EQ(texts,
        (QStringList{u"Show Ferrylane"_s, u"Service running"_s, u"Open Received Files"_s,
            u"Pair Device\u2026"_s, u"Paired Devices\u2026"_s, {}, u"Restart FerrylaneCtrl+R"_s,
            u"Quit FerrylaneCtrl+Q"_s}));
    QAction& running = *panel_->actions()[1];
    for (const bool isOn : {false, true}) {
        running.trigger();
        EXPECT_EQ(running.isChecked(), isOn);
        EXPECT_EQ(service_.serviceRunning(), isOn);
    }
}
