#include "Controls.h"

#include "app/flows/ReceiverChooser.h"
#include "app/widgets/QRCodeButton.h"
#include "app/windows/AccessPanel.h"
#include "app/windows/DevicesPanel.h"
#include "app/windows/InfoPanel.h"
#include "app/windows/MainPanel.h"
#include "camera/QRDetector.h"
#include "core/Encodings.h"
#include "pairing/PairedTargets.h"
#include "support/EventLoop.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using app_test::accessibleName;
using app_test::buttonNamed;

namespace {

/// Does something with the next modal dialog, once it is there.
void inNextDialog(std::function<void(QWidget& dialog)> act)
{
    QTimer::singleShot(0, [act = std::move(act)] { act(*QApplication::activeModalWidget()); });
}

} // namespace

TEST(DevicesPanelTest, removesPairingsAndKeepsItsPlaceWhenTheListChanges)
{
    const support::PrivateUserFolders folders;
    for (int i = 10; i < 60; ++i) {
        const QString name = u"Phone %1 with a name that is far too long for one row"_s.arg(i);
        const QString key
            = base64URLEncode(platform::bytesOf(QByteArray(32, static_cast<char>(i))));
        ASSERT_TRUE(saveFerrylanePairedTarget({name, u"http://10.0.0.1:8787"_s, key}));
    }
    int pairings = 0;
    DevicesPanel panel;
    QObject::connect(&panel, &DevicesPanel::pairingRequested, [&] { ++pairings; });
    panel.setNearby({u"Tablet"_s});
    panel.present();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
    QScrollBar& bar = *panel.findChild<QScrollArea*>()->verticalScrollBar();
    bar.setValue(1500);
    const QString name
        = u"Remove pairing with Phone 30 with a name that is far too long for one row"_s;
    buttonNamed(panel, name).setFocus();
    inNextDialog([](QWidget& dialog) { buttonNamed(dialog, u"Remove"_s).click(); });
    buttonNamed(
        panel, u"Remove pairing with Phone 10 with a name that is far too long for one row"_s)
        .click();
    EXPECT_EQ(loadFerrylanePairedTargets().size(), 49);
    EXPECT_NEAR(bar.value(), 1500, 120);
    ASSERT_NE(panel.focusWidget(), nullptr);
    EXPECT_EQ(accessibleName(*panel.focusWidget()), name);
    inNextDialog([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    buttonNamed(panel, name).click();
    EXPECT_EQ(loadFerrylanePairedTargets().size(), 49);

    for (const QString& button : {u"Pair Tablet"_s, u"Pair device with QR"_s}) {
        panel.present();
        buttonNamed(panel, button).click();
        EXPECT_FALSE(panel.isVisible());
    }
    EXPECT_EQ(pairings, 2);
    removeFerrylanePairedTargets();
    panel.setNearby({});
    panel.present();
    const auto labels = panel.findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->isVisible() && label->text() == u"No nearby devices found."_s;
    }));
    QTest::keyClick(&panel, Qt::Key_Escape);
    EXPECT_FALSE(panel.isVisible());
}

TEST(PairingCodeTest, canBeReadInEveryWindow)
{
    const QString link = u"http://192.168.1.20:8788/?flkey="_s + QString(43, u'K');
    AccessPanel panel(qr(link), u"http://192.168.1.20:8788"_s);
    panel.present();
    EXPECT_EQ(detectQRCode(panel.grab().toImage()), link);
    EXPECT_EQ(app_test::clippedTexts(panel), QStringList());

    MainPanel mainPanel;
    mainPanel.setPairingCode(qr(link));
    EXPECT_EQ(detectQRCode(mainPanel.grab().toImage()), link);
}

TEST(InfoPanelTest, takesALongLogInPieces)
{
    QStringList lines;
    for (int i = 0; i < 20'000; ++i) {
        lines << u"2026-11-24 21:00:00 \u00B7 Received \u00B7 file %1 \u00B7 Completed"_s.arg(i);
    }
    InfoPanel panel({});
    panel.present();
    panel.setTransfers(u"20000 \u00B7 1 MB"_s, lines);
    const auto* const text = panel.findChild<QPlainTextEdit*>();
    EXPECT_LT(text->blockCount(), 1000) << "the rest comes later";
    EXPECT_TRUE(support::processEventsUntil([&] { return text->blockCount() == lines.size(); }));
    EXPECT_EQ(text->toPlainText(), lines.join(u'\n'));
    EXPECT_EQ(text->verticalScrollBar()->value(), 0);
}

TEST(ReceiverChooserTest, offersManyWithinTheScreen)
{
    const QList<SendChoice> choices = sendChoices(
        {}, QStringList(200, u"Phone"_s) << u"A & B"_s << QString(300, u'x'), u"Office PC"_s);
    ASSERT_GT(choices.size(), 200);
    const auto answering = [&](const std::function<void(QWidget & dialog)>& act) {
        inNextDialog([act](QWidget& dialog) {
            EXPECT_TRUE(dialog.screen()->availableGeometry().contains(dialog.frameGeometry()));
            act(dialog);
        });
        return askForReceiver(nullptr, sendQuestionText(1), choices);
    };
    const SendChoice pressed
        = answering([](QWidget& dialog) { buttonNamed(dialog, u"Pair A & B"_s).click(); });
    EXPECT_EQ(pressed.text, u"Pair A & B"_s);
    const SendChoice escaped
        = answering([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(escaped.kind, SendChoice::Kind::cancel);
}
