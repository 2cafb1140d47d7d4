#include "DesktopTest.h"

#include "platform/Tcp.h"
#include "support/TestFiles.h"

#include <algorithm>
#include <atomic>

// The program as a user has it: on a screen, with a pointer and a keyboard.

using namespace desktop;

TEST_F(DesktopTest, StartsIntoItsPanelAndTheTray)
{
    start();
    const QPoint middle(Desktop::screen.width() / 2, Desktop::screen.height() / 2);
    EXPECT_LT((panel_.center() - middle).manhattanLength(), 40);

    const QRect icon = trayIcon().geometry;
    EXPECT_GT(icon.top(), Desktop::screen.height() - 40);
    desktop_->click(icon.center(), 3);
    const Window menu = desktop_->waitForWindow(
        [](QSize size) { return size != panelSize && size.width() > 100; });
    EXPECT_TRUE(QRect(QPoint(), Desktop::screen).contains(menu.geometry));
    // "Service running" is the second entry.
    desktop_->press({u"Down"_s, u"Down"_s, u"Return"_s});
    EXPECT_TRUE(program_->waitForLog("Ferrylane service stopped"));
}

TEST_F(DesktopTest, ClosedPanelComesBackWithTheNextLaunch)
{
    start();
    desktop_->press({u"alt+F4"_s});
    ASSERT_TRUE(desktop_->waitUntilGone(panelSize));
    EXPECT_EQ(launchAgain(), 0);
    EXPECT_EQ(desktop_->waitForWindow(panelSize).geometry, panel_);
    EXPECT_TRUE(program_->isRunning());

    desktop_->press({u"alt+F4"_s});
    ASSERT_TRUE(desktop_->waitUntilGone(panelSize));
    desktop_->click(trayIcon().geometry.center());
    EXPECT_EQ(desktop_->waitForWindow(panelSize).geometry, panel_);
}

TEST_F(DesktopTest, WithoutATrayThePanelStaysAtHandUntilOneComes)
{
    start(Desktop::Tray::absent);
    desktop_->press({u"alt+F4"_s});
    ASSERT_TRUE(desktop_->waitUntilGone(panelSize));
    EXPECT_TRUE(program_->isRunning());
    EXPECT_EQ(launchAgain(), 0);
    ASSERT_EQ(desktop_->waitForWindow(panelSize).geometry.size(), panelSize);

    desktop_->startWindowManager(Desktop::Tray::present);
    EXPECT_FALSE(trayIcon().id.isEmpty());

    desktop_->click(desktop_->waitForWindow(panelSize).geometry.center());
    desktop_->press({u"ctrl+q"_s});
    EXPECT_TRUE(support::waitUntil([this] { return !program_->isRunning(); }));
}

TEST_F(DesktopTest, TellsThatThePortIsTakenAndTriesAgain)
{
    platform::TcpNetwork network("other");
    const auto other = network.listener(8788);
    std::atomic<bool> isTaken = false;
    other->start([&](auto /*state*/, const auto& error) { isTaken = !error; },
        [](const auto& /*connection*/) {});
    ASSERT_TRUE(support::waitUntil([&] { return isTaken.load(); }));
    desktop_.emplace(home_);
    program_.emplace(QStringLiteral(FERRYLANE_PROGRAM), home_, desktop_->environment());
    ASSERT_TRUE(program_->startUntilLogged("Ferrylane service stopped"));
    const auto isAlertShown = [this] {
        const QList<Window> windows = desktop_->windows();
        return std::any_of(windows.begin(), windows.end(), [](const Window& window) {
            return window.geometry.size() != panelSize && window.geometry.width() > 100;
        });
    };
    ASSERT_TRUE(support::waitUntil(isAlertShown));
    EXPECT_TRUE(support::waitUntil([&] {
        desktop_->press({u"Return"_s});
        return !isAlertShown();
    }));

    other->cancel();
    // The switch.
    desktop_->click(desktop_->waitForWindow(panelSize).geometry.topLeft() + QPoint(54, 157));
    EXPECT_TRUE(program_->waitForLog("Server ready on port 8788"));
}

TEST_F(DesktopTest, ShowsAFileThatIsReceived)
{
    start();
    const QByteArray content = support::testContent(3'000'000);
    support::writeFile(home_.ownFile(u"holiday.jpg"_s), content);
    support::ChildProcess upload;
    upload.start(phone(
        {u"upload"_s, u"--local"_s, u"--name"_s, u"Pixel 8"_s, home_.ownFile(u"holiday.jpg"_s)}));

    const QRect progress = desktop_->waitForWindow(progressSize).geometry;
    EXPECT_EQ(progress.topLeft(), QPoint(Desktop::screen.width() - 340 - 18, 18));
    EXPECT_EQ(upload.waitForEnd(support::patience), 0);
    EXPECT_TRUE(desktop_->waitUntilGone(progressSize));
    EXPECT_EQ(home_.received(u"Pixel 8/holiday.jpg"_s), content);
}
