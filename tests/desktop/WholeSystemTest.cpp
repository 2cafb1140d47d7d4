#include "DesktopTest.h"

#include "app/widgets/QRCodeButton.h"
#include "support/TestFiles.h"

#include <QImage>
#include <QPainter>
#include <QSettings>

// All that a user does with the program, from the first start to the reset.

using namespace desktop;

namespace {

constexpr QSize scannerSize(520, 430);
constexpr QSize infoSize(540, 610);

class WholeSystemTest : public DesktopTest {
protected:
    void TearDown() override
    {
        // The program may have started itself anew, as nobody's child.
        EXPECT_EQ(launchAgain(u"quit"_s), 0);
    }

    void click(QSize window, QPoint place) const
    {
        desktop_->click(desktop_->waitForWindow(window).geometry.topLeft() + place);
    }

    /// Once the window has the focus.
    void press(QSize window, const QStringList& keys) const
    {
        ASSERT_TRUE(desktop_->waitForFocus(desktop_->waitForWindow(window)));
        desktop_->press(keys);
    }

    /// Waits for a dialog that was not there before, and answers it.
    void answer(const QStringList& keys, const QString& text = {}) const
    {
        const Window dialog = desktop_->waitForWindow([](QSize size) {
            return size != panelSize && size != infoSize && size != scannerSize
                && size != progressSize && size.width() > 100;
        });
        ASSERT_FALSE(dialog.id.isEmpty());
        ASSERT_TRUE(desktop_->waitForFocus(dialog));
        if (!text.isEmpty()) desktop_->type(text);
        desktop_->press(keys);
        EXPECT_TRUE(desktop_->waitUntilGone(dialog.geometry.size()));
    }

    [[nodiscard]] bool hasSetting(const QString& key, const QString& value) const
    {
        return support::waitUntil([&] {
            const QSettings settings(home_.settingsFile(), QSettings::IniFormat);
            return settings.value(key).toString() == value;
        });
    }

    [[nodiscard]] bool uploads(const QString& name) const
    {
        support::writeFile(home_.ownFile(name), name.toUtf8());
        support::ChildProcess upload;
        upload.start(
            phone({u"upload"_s, u"--local"_s, u"--name"_s, u"Pixel 8"_s, home_.ownFile(name)}));
        return upload.waitForEnd(support::patience) == 0;
    }

    /// Waits until the program has started `count` times.
    [[nodiscard]] bool isStarted(qsizetype count) const
    {
        return support::waitUntil(
            [&] { return home_.log().count("UDP discovery responder ready") >= count; });
    }
};

} // namespace

TEST_F(WholeSystemTest, ServesFromTheFirstStartToTheReset)
{
    start();
    const QByteArray firstKey = support::contentOf(home_.keyFile());
    const QString pairedFile = home_.path() + u"/.local/share/Ferrylane/paired-targets-v2.json"_s;

    // Pairs a phone by a picture of its code.
    support::ChildProcess playedPhone;
    const QString picture = home_.ownFile(u"code.png"_s);
    QImage paper(500, 500, QImage::Format_RGB32);
    paper.fill(Qt::white);
    QPainter(&paper).drawImage(40, 40, ferrylane::qr(startPhone(playedPhone), 8));
    ASSERT_TRUE(paper.save(picture));
    EXPECT_EQ(launchAgain(u"pair"_s), 0);
    answer({u"Tab"_s, u"Return"_s}); // "Pair without camera..."
    click(scannerSize, {328, 404});  // "Open picture..."
    answer({u"Return"_s}, picture);
    answer({u"Return"_s}); // "Paired with Pixel 8"
    EXPECT_TRUE(support::contentOf(pairedFile).contains("Pixel 8"));
    EXPECT_TRUE(program_->waitForLog("Paired Mac sender with Pixel 8 at http://127.0.0.1:8787"));

    // Receives three files, sends two.
    for (const QString& name : {u"a.txt"_s, u"b.txt"_s, u"a.txt"_s}) {
        EXPECT_TRUE(uploads(name));
    }
    EXPECT_EQ(home_.receivedFiles(),
        (QStringList{u"Pixel 8/a (1).txt"_s, u"Pixel 8/a.txt"_s, u"Pixel 8/b.txt"_s}));
    EXPECT_EQ(transfers(3),
        (QStringList{u"Received a.txt Completed"_s, u"Received b.txt Completed"_s,
            u"Received a (1).txt Completed"_s}));
    ASSERT_TRUE(desktop_->waitUntilGone(progressSize));
    sendByDragging({home_.ownFile(u"a.txt"_s), home_.ownFile(u"b.txt"_s)});
    EXPECT_EQ(
        transfers(5).last(2), (QStringList{u"Sent a.txt Completed"_s, u"Sent b.txt Completed"_s}));
    EXPECT_EQ(support::PrivateHome::filesBelow(onPhone_).size(), 2);

    // Renames the device and receives into another folder.
    click(panelSize, {60, 115});
    answer({u"Return"_s}, u"Studio"_s);
    EXPECT_TRUE(program_->waitForLog("Bonjour advertisement refreshed as Studio"));
    EXPECT_TRUE(hasSetting(u"FerrylaneDeviceName"_s, u"Studio"_s));
    const QString otherFolder = home_.ownFile(u"other folder"_s);
    support::writeFile(otherFolder + u"/old"_s, {});
    click(panelSize, {282, 38});
    press(infoSize, {u"Tab"_s, u"space"_s}); // "Choose..."
    answer({u"Return"_s}, otherFolder);
    ASSERT_TRUE(hasSetting(u"FerrylaneReceiveFolder"_s, otherFolder));
    EXPECT_TRUE(uploads(u"c.txt"_s));
    EXPECT_EQ(support::contentOf(otherFolder + u"/Pixel 8/c.txt"_s), "c.txt");

    // Off and on.
    EXPECT_EQ(launchAgain(), 0);
    click(panelSize, {54, 157});
    EXPECT_TRUE(program_->waitForLog("Ferrylane service stopped"));
    EXPECT_TRUE(hasSetting(u"FerrylaneServiceRunning"_s, u"false"_s));
    EXPECT_FALSE(uploads(u"d.txt"_s));
    click(panelSize, {54, 157});
    EXPECT_TRUE(program_->waitForLog("Ferrylane service started"));
    ASSERT_TRUE(isStarted(2));

    // Starts anew with everything kept.
    EXPECT_EQ(launchAgain(u"restart"_s), 0);
    EXPECT_TRUE(support::waitUntil([this] { return !program_->isRunning(); }));
    ASSERT_TRUE(isStarted(3));
    EXPECT_EQ(support::contentOf(home_.keyFile()), firstKey);
    EXPECT_EQ(transfers(6).size(), 6);

    // Forgets everything but the files and the log.
    ASSERT_FALSE(desktop_->waitForWindow(panelSize).id.isEmpty());
    click(panelSize, {282, 38});
    press(infoSize, {u"shift+Tab"_s, u"shift+Tab"_s, u"space"_s}); // "Reset..."
    answer({u"shift+Tab"_s, u"Return"_s});
    ASSERT_TRUE(isStarted(4));
    EXPECT_TRUE(support::waitUntil([&] {
        const QByteArray key = support::contentOf(home_.keyFile());
        return key.size() == 32 && key != firstKey;
    }));
    EXPECT_TRUE(hasSetting(u"FerrylaneDeviceName"_s, {}));
    EXPECT_EQ(support::contentOf(pairedFile), "");
    EXPECT_EQ(transfers(0), QStringList());
    EXPECT_EQ(home_.receivedFiles().size(), 3);
    EXPECT_EQ(support::contentOf(otherFolder + u"/Pixel 8/c.txt"_s), "c.txt");
}
