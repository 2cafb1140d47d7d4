#include "app/windows/MainPanel.h"

#include "Controls.h"
#include "support/QtPrinting.h"

#include <QCloseEvent>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using app_test::buttonNamed;

namespace {

QImage codeOf(int modules)
{
    QImage code(modules, modules, QImage::Format_RGB32);
    code.fill(Qt::black);
    return code;
}

class MainPanelTest : public ::testing::Test {
protected:
    MainPanelTest()
    {
        tell(&MainPanel::settingsRequested, u"settings"_s);
        tell(&MainPanel::deviceNameRequested, u"name"_s);
        tell(&MainPanel::qrCodeRequested, u"enlarge"_s);
        tell(&MainPanel::receivedFilesRequested, u"received"_s);
        tell(&MainPanel::fileChoiceRequested, u"choose"_s);
        QObject::connect(&panel_, &MainPanel::serviceSwitched,
            [this](bool isOn) { intents_ << (isOn ? u"on"_s : u"off"_s); });
        panel_.setDeviceName(u"Studio"_s);
        panel_.setPairingCode(codeOf(45));
        panel_.setServiceState(true, {});
        panel_.present();
    }

    void tell(void (MainPanel::*signal)(), const QString& what)
    {
        QObject::connect(&panel_, signal, [this, what] { intents_ << what; });
    }

    QStringList takeIntents() { return std::exchange(intents_, {}); }

    /// As the button of the window's frame does.
    void closeByHand()
    {
        QCloseEvent close;
        QSpontaneKeyEvent::setSpontaneous(&close);
        qApp->notify(&panel_, &close);
        if (close.isAccepted()) panel_.hide();
    }

    QStringList intents_;
    MainPanel panel_;
};

TEST_F(MainPanelTest, EveryControlWorksByMouseAndKeyboard)
{
    struct Row {
        QString button, first, second, third;
    };
    const Row rows[]{
        {u"Settings"_s, u"settings"_s, u"settings"_s, u"settings"_s},
        {u"Studio"_s, u"name"_s, u"name"_s, u"name"_s},
        {u"Pairing QR code"_s, u"enlarge"_s, u"enlarge"_s, u"enlarge"_s},
        {u"Receiver service"_s, u"off"_s, u"on"_s, u"off"_s},
        {u"Received Files"_s, u"received"_s, u"received"_s, u"received"_s},
        {u"Drop or select files"_s, u"choose"_s, u"choose"_s, u"choose"_s},
    };
    QStringList names;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.button.toStdString());
        names << row.button;
        QAbstractButton& button = buttonNamed(panel_, row.button);
        QTest::mouseClick(&button, Qt::LeftButton);
        QTest::keyClick(&button, Qt::Key_Space);
        QTest::keyClick(&button, Qt::Key_Return);
        EXPECT_EQ(takeIntents(), QStringList({row.first, row.second, row.third}));
    }
    EXPECT_EQ(app_test::tabOrder(panel_), names);
}

TEST_F(MainPanelTest, SwitchFollowsTheServiceSilently)
{
    QAbstractButton& button = buttonNamed(panel_, u"Receiver service"_s);
    const QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(&button);
    EXPECT_EQ(read->role(), QAccessible::CheckBox);
    for (const bool isOn : {false, true}) {
        panel_.setServiceState(isOn, u"Port 8788 is taken"_s);
        EXPECT_EQ(button.isChecked(), isOn);
        EXPECT_EQ(read->state().checked != 0, isOn);
        EXPECT_EQ(button.toolTip(), u"Port 8788 is taken"_s);
    }
    EXPECT_EQ(takeIntents(), QStringList());
}

TEST_F(MainPanelTest, StaysAtHandWithoutATray)
{
    closeByHand();
    EXPECT_TRUE(panel_.isVisible());
    EXPECT_TRUE(panel_.isMinimized());
    panel_.present();
    EXPECT_FALSE(panel_.isMinimized());
    // The end of the program also closes windows, and must not be held up.
    EXPECT_TRUE(panel_.close());
}

TEST_F(MainPanelTest, MenuShortcutsWorkInThePanel)
{
    QMenu menu;
    menu.addAction(u"Quit"_s, [this] { intents_ << u"quit"_s; })->setShortcut(Qt::CTRL | Qt::Key_Q);
    panel_.setContextMenu(&menu);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&panel_));
    QTest::keyClick(&panel_, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(takeIntents(), QStringList(u"quit"_s));

    panel_.setContextMenu(nullptr);
    QTest::keyClick(&panel_, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(takeIntents(), QStringList());
}

TEST_F(MainPanelTest, TextsFit)
{
    panel_.setSendStatus(u"Choose or drop files, then select a destination"_s, true);
    panel_.setReceiveStatus(u"100.0%  1112.5 MB/s"_s);
    panel_.setServiceState(false, {});
    EXPECT_EQ(app_test::clippedTexts(panel_), QStringList());
}

TEST_F(MainPanelTest, ModulesOfTheCodeAreWholePixels)
{
    QAbstractButton& button = buttonNamed(panel_, u"Pairing QR code"_s);
    const int rooms[]{21, 41, 45, 52};
    for (const int modules : rooms) {
        SCOPED_TRACE(modules);
        QImage code = codeOf(modules);
        code.setPixelColor(0, 0, Qt::white);
        panel_.setPairingCode(code);
        const QImage shown
            = panel_.grab(QRect(button.mapTo(&panel_, QPoint()), button.size())).toImage();
        int dark = 0;
        int between = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const QRgb pixel = shown.pixel(x, y);
                dark += pixel == qRgb(0, 0, 0);
                between += pixel != qRgb(0, 0, 0) && pixel != qRgb(255, 255, 255);
            }
        }
        const int pixels = shown.width() / modules;
        EXPECT_EQ(dark, (modules * modules - 1) * pixels * pixels);
        EXPECT_EQ(between, 0);
    }
}

TEST_F(MainPanelTest, TitleKeepsMarks)
{
    panel_.setTitle(u"Ferrylane — Received a[*].txt"_s);
    EXPECT_EQ(panel_.windowTitle(), u"Ferrylane — Received a[*][*].txt"_s);
}

} // namespace
