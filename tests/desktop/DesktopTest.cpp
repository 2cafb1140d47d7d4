#include "Desktop.h"

#include "platform/Tcp.h"
#include "support/ProgramUnderTest.h"
#include "support/QtPrinting.h"
#include "support/StartDaemon.h"
#include "support/UploadStream.h"
#include "support/Waiting.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>
#include <QUrlQuery>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

// The program as a user has it: on a screen, with a pointer and a keyboard.

using namespace Qt::StringLiterals;
using desktop::Desktop;
using desktop::Window;

namespace {

constexpr QSize panelSize(318, 555);
constexpr QSize progressSize(340, 112);
constexpr QSize dragSourceSize(200, 100);

class DesktopTest : public ::testing::Test {
protected:
    void SetUp() override { support::PrivateHome::write(home_.ownFile(u"phone"_s), {}); }

    void start(Desktop::Tray tray = Desktop::Tray::present)
    {
        desktop_.emplace(home_, tray);
        program_.emplace(QStringLiteral(FERRYLANE_PROGRAM), home_, desktop_->environment());
        ASSERT_TRUE(program_->start()) << home_.log().constData();
        panel_ = desktop_->waitForWindow(panelSize).geometry;
        ASSERT_EQ(panel_.size(), panelSize);
    }

    [[nodiscard]] Window trayIcon() const
    {
        return desktop_->waitForWindow([](QSize size) { return size.width() <= 32; });
    }

    [[nodiscard]] support::Command phone(const QStringList& arguments) const
    {
        return {.program = QStringLiteral(FERRYLANE_PHONE_PROGRAM),
            .arguments = arguments,
            .environment = home_.environment(),
            .outputFile = home_.ownFile(u"phone"_s),
            .errorFile = home_.ownFile(u"phone-errors"_s)};
    }

    /// Exit code of a second launch of the program.
    std::optional<int> launchAgain()
    {
        support::ChildProcess second;
        second.start(
            {.program = QStringLiteral(FERRYLANE_PROGRAM), .environment = desktop_->environment()});
        return second.waitForEnd(support::patience);
    }

    /// Makes a phone that plays in `process` one of the paired ones.
    void pairWithPlayedPhone(support::ChildProcess& process)
    {
        support::startDaemon(process,
            phone({u"receive"_s, u"--dir"_s, home_.ownFile(u"on the phone"_s), u"--name"_s,
                u"Pixel 8"_s}),
            "flkey=");
        static const QRegularExpression link(u"http://\\S+flkey=\\S+"_s);
        const QByteArray shown = support::PrivateHome::contentOf(home_.ownFile(u"phone"_s));
        const QUrl url(link.match(QString::fromUtf8(shown)).captured());
        const QJsonObject target{{u"name"_s, u"Pixel 8"_s},
            {u"baseURL"_s, u"http://127.0.0.1:%1"_s.arg(url.port())},
            {u"keyB64"_s, QUrlQuery(url).queryItemValue(u"flkey"_s)}};
        support::PrivateHome::write(
            home_.path() + u"/.local/share/Ferrylane/paired-targets-v2.json"_s,
            QJsonDocument(QJsonArray{target}).toJson());
    }

    support::PrivateHome home_;
    std::optional<Desktop> desktop_;
    std::optional<support::ProgramUnderTest> program_;
    QRect panel_; ///< the main panel's place
};

} // namespace

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
    const auto network = platform::TcpNetwork::create("other");
    const auto other = network->listener(8788);
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
    support::PrivateHome::write(home_.ownFile(u"holiday.jpg"_s), content);
    support::ChildProcess upload;
    upload.start(phone(
        {u"upload"_s, u"--local"_s, u"--name"_s, u"Pixel 8"_s, home_.ownFile(u"holiday.jpg"_s)}));

    const QRect progress = desktop_->waitForWindow(progressSize).geometry;
    EXPECT_EQ(progress.topLeft(), QPoint(Desktop::screen.width() - 340 - 18, 18));
    EXPECT_EQ(upload.waitForEnd(support::patience), 0);
    EXPECT_TRUE(desktop_->waitUntilGone(progressSize));
    EXPECT_EQ(home_.received(u"Pixel 8/holiday.jpg"_s), content);
}

TEST_F(DesktopTest, SendsAFileDroppedFromAnotherProgram)
{
    support::ChildProcess playedPhone;
    pairWithPlayedPhone(playedPhone);
    start();
    const QByteArray content = support::testContent(200'000);
    support::PrivateHome::write(home_.ownFile(u"ticket.pdf"_s), content);
    support::ChildProcess source;
    source.start({.program = QStringLiteral(DRAG_SOURCE_PROGRAM),
        .arguments = {home_.ownFile(u"ticket.pdf"_s)},
        .environment = desktop_->environment()});
    QRect from;
    ASSERT_TRUE(support::waitUntil([&] {
        const auto windows = desktop_->windows(u"drag_source"_s);
        if (!windows.isEmpty()) from = windows.first().geometry;
        return from.size() == dragSourceSize;
    }));

    // A place beside the button on the drop area.
    desktop_->drag(from.center(), panel_.topLeft() + QPoint(45, 345));
    const Window chooser = desktop_->waitForWindow(
        [](QSize size) { return size != panelSize && size.width() > 200; });
    ASSERT_FALSE(chooser.id.isEmpty());
    // "Send to Pixel 8" is the first button.
    desktop_->press({u"Return"_s});
    const QString onPhone = home_.ownFile(u"on the phone"_s);
    EXPECT_TRUE(support::waitUntil([&] {
        const QJsonArray log
            = QJsonDocument::fromJson(support::PrivateHome::contentOf(home_.transferLogFile()))
                  .array();
        return !log.isEmpty() && log[0][u"result"_s] == u"Completed"_s;
    })) << program_->log().constData();
    const QStringList files = support::PrivateHome::filesBelow(onPhone);
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(support::PrivateHome::contentOf(onPhone + u'/' + files[0]), content);
}
