#include "Controls.h"

#include "app/AccessPanel.h"
#include "app/DeviceNameDialog.h"
#include "app/DevicesPanel.h"
#include "app/FeedbackDialog.h"
#include "app/InfoPanel.h"
#include "app/MainPanel.h"
#include "app/QRImage.h"
#include "app/ReceiverChooser.h"
#include "camera/QRDetector.h"
#include "support/EventLoop.h"
#include "support/QtPrinting.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
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

DeviceRow paired(const QString& name)
{
    return {name, true, FerrylanePairedTarget{name, u"http://x:8787"_s, u"key of "_s + name}};
}

/// Does something with the next modal dialog, once it is there.
void inNextDialog(std::function<void(QWidget& dialog)> act)
{
    QTimer::singleShot(0, [act = std::move(act)] { act(*QApplication::activeModalWidget()); });
}

} // namespace

TEST(DevicesPanelTest, actsOnTheDeviceOfTheRow)
{
    QStringList told;
    DevicesPanel panel(
        {[&](const auto& target) { told << target.keyB64; }, [&] { told << u"pair"_s; }});
    panel.setRows({paired(u"Pixel"_s), {u"Tablet"_s, true, std::nullopt}});
    panel.present();
    buttonNamed(panel, u"Remove pairing with Pixel"_s).click();
    buttonNamed(panel, u"Pair Tablet"_s).click();
    buttonNamed(panel, u"Pair device with QR"_s).click();
    EXPECT_EQ(told, (QStringList{u"key of Pixel"_s, u"pair"_s, u"pair"_s}));
    QTest::keyClick(&panel, Qt::Key_Escape);
    EXPECT_FALSE(panel.isVisible());
}

TEST(DevicesPanelTest, keepsItsPlaceWhenTheListChanges)
{
    QList<DeviceRow> rows;
    for (int i = 0; i < 100; ++i) {
        rows.append(paired(u"Phone %1 with a name that is far too long for one row"_s.arg(i)));
    }
    DevicesPanel panel({});
    panel.setRows(rows);
    panel.present();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
    QScrollBar& bar = *panel.findChild<QScrollArea*>()->verticalScrollBar();
    bar.setValue(1500);
    const QString name = u"Remove pairing with "_s + rows[30].name;
    buttonNamed(panel, name).setFocus();
    rows.prepend(paired(u"New"_s));
    panel.setRows(rows);
    EXPECT_NEAR(bar.value(), 1500, 120);
    ASSERT_NE(panel.focusWidget(), nullptr);
    EXPECT_EQ(accessibleName(*panel.focusWidget()), name);

    panel.setRows({});
    EXPECT_EQ(panel.findChildren<QPushButton*>().size(), 2);
    const auto labels = panel.findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->isVisible() && label->text() == u"No nearby devices found."_s;
    }));
}

TEST(PairingCodeTest, canBeReadInEveryWindow)
{
    const QString link = u"http://192.168.1.20:8788/?flkey="_s + QString(43, u'K');
    AccessPanel panel(qr(link, 1), u"http://192.168.1.20:8788"_s);
    panel.present();
    EXPECT_EQ(detectQRCode(panel.grab().toImage()), link);
    EXPECT_EQ(app_test::clippedTexts(panel), QStringList());

    MainPanel mainPanel({});
    mainPanel.setPairingCode(qr(link, 1));
    EXPECT_EQ(detectQRCode(mainPanel.grab().toImage()), link);
}

TEST(InfoPanelTest, showsTheStateAndTellsOfEveryControl)
{
    QStringList told;
    const auto saying = [&](const QString& what) { return [&told, what] { told << what; }; };
    InfoPanel panel({.deviceName = u"Office PC"_s,
                        .version = u"1.2"_s,
                        .receiveFolder = u"/home/anna/Downloads"_s,
                        .autoOffSeconds = 300,
                        .isVisible = true,
                        .isServiceRunning = false,
                        .keepsAllTransfers = true},
        {.chooseFolder = saying(u"Choose\u2026"_s),
            .autoOffChosen = [&](qint64 seconds) { told << QString::number(seconds); },
            .visibilitySwitched = {},
            .showDevices = saying(u"Devices\u2026"_s),
            .transfersKept = [&](bool all) { told << (all ? u"all"_s : u"100"_s); },
            .openWebsite = saying(u"Website"_s),
            .openPrivacy = saying(u"Privacy"_s),
            .openSupport = saying(u"Help & support"_s),
            .giveFeedback = saying(u"Feedback\u2026"_s),
            .nameDevice = saying(u"Rename device\u2026"_s),
            .openFolder = saying(u"Open folder"_s),
            .reset = saying(u"Reset\u2026"_s)});
    panel.present();
    const auto* const visible = panel.findChild<QCheckBox*>();
    EXPECT_TRUE(visible->isChecked());
    EXPECT_FALSE(visible->isEnabled());
    auto* const choices = panel.findChild<QComboBox*>();
    EXPECT_EQ(choices->currentText(), u"After 5 minutes"_s);
    EXPECT_EQ(panel.findChild<QLineEdit*>()->text(), u"/home/anna/Downloads"_s);

    const QStringList buttons{u"Choose\u2026"_s, u"Devices\u2026"_s, u"Website"_s, u"Privacy"_s,
        u"Help & support"_s, u"Feedback\u2026"_s, u"Rename device\u2026"_s, u"Open folder"_s,
        u"Reset\u2026"_s};
    for (const QString& button : buttons) {
        buttonNamed(panel, button).click();
    }
    EXPECT_EQ(told, buttons);
    told.clear();
    EXPECT_TRUE(buttonNamed(panel, u"Continuous"_s).isChecked());
    buttonNamed(panel, u"Last 100 transfers"_s).click();
    QTest::keyClick(choices, Qt::Key_Up);
    EXPECT_EQ(told, (QStringList{u"100"_s, u"60"_s}));
    buttonNamed(panel, u"Done"_s).click();
    EXPECT_FALSE(panel.isVisible());
}

TEST(InfoPanelTest, takesALongLogInPieces)
{
    QStringList lines;
    for (int i = 0; i < 20'000; ++i) {
        lines << u"2026-11-24 21:00:00 \u00B7 Received \u00B7 file %1 \u00B7 Completed"_s.arg(i);
    }
    InfoPanel panel({}, {});
    panel.present();
    panel.setTransfers(u"20000 \u00B7 1 MB"_s, lines);
    const auto* const text = panel.findChild<QPlainTextEdit*>();
    EXPECT_LT(text->blockCount(), 1000) << "the rest comes later";
    EXPECT_TRUE(support::processEventsUntil([&] { return text->blockCount() == lines.size(); }));
    EXPECT_EQ(text->toPlainText(), lines.join(u'\n'));
    EXPECT_EQ(text->verticalScrollBar()->value(), 0);
}

TEST(DialogsTest, giveWhatWasTypedByTheButtonPressed)
{
    const auto pressing = [](const QString& button) {
        inNextDialog([button](QWidget& dialog) {
            dialog.findChild<QLineEdit*>()->setText(u"Studio"_s);
            buttonNamed(dialog, button).click();
        });
        return askForDeviceName(nullptr, u"Office PC"_s);
    };
    const auto saved = pressing(u"Save"_s);
    ASSERT_TRUE(saved);
    EXPECT_FALSE(saved->usesDefault);
    EXPECT_EQ(saved->typed, u"Studio"_s);
    EXPECT_TRUE(pressing(u"Use Default"_s).value().usesDefault);
    EXPECT_FALSE(pressing(u"Cancel"_s));

    inNextDialog([](QWidget& dialog) {
        dialog.findChild<QPlainTextEdit*>()->setPlainText(u"More!"_s);
        dialog.findChild<QCheckBox*>()->click();
        buttonNamed(dialog, u"Open email"_s).click();
    });
    const auto feedback = askForFeedback(nullptr);
    ASSERT_TRUE(feedback);
    EXPECT_EQ(feedback->text, u"More!"_s);
    EXPECT_TRUE(feedback->withDetails);
    inNextDialog([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_FALSE(askForFeedback(nullptr));
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
