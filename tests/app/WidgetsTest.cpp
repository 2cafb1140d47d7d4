#include "app/widgets/Appearance.h"
#include "app/widgets/AskDialog.h"
#include "app/widgets/Buttons.h"
#include "app/widgets/FerrylaneDropView.h"
#include "app/widgets/MiddleElidedLabel.h"

#include "Controls.h"
#include "support/QtPrinting.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;

namespace {

TEST(FerrylaneDropView, TakesFilesOnly)
{
    const QTemporaryDir folder;
    const QUrl directory = QUrl::fromLocalFile(folder.path());
    const QUrl first = QUrl::fromLocalFile(u"/somewhere/b c.txt"_s);
    const QUrl second = QUrl::fromLocalFile(u"/somewhere/a.txt"_s);
    const QUrl web(u"https://example.org/a.txt"_s);
    struct Row {
        QList<QUrl> dropped;
        std::optional<platform::FilePaths> passedOn;
    };
    const Row rows[]{
        {{first, second}, platform::FilePaths({first.toLocalFile(), second.toLocalFile()})},
        {{directory, second, web}, platform::FilePaths({second.toLocalFile()})},
        {{directory}, platform::FilePaths()},
        // A name that is no text, and one with a percent sign.
        {QUrl::fromStringList({u"file:///nowhere/\u00e9%FF%25FF"_s}),
            platform::FilePaths({platform::FilePath::fromNative("/nowhere/\u00e9\xff%FF")})},
        {{web}, std::nullopt},
        {{}, std::nullopt},
    };

    FerrylaneDropView view;
    std::optional<platform::FilePaths> passedOn;
    view.onFiles = [&](const platform::FilePaths& paths) { passedOn = paths; };
    for (const Row& row : rows) {
        QMimeData data;
        data.setText(u"/somewhere/text.txt"_s);
        data.setUrls(row.dropped);
        const auto actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter({5, 5}, actions, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view, &enter);
        EXPECT_EQ(enter.isAccepted(), row.passedOn.has_value());

        passedOn.reset();
        QDropEvent drop({5, 5}, actions, &data, Qt::LeftButton, Qt::NoModifier);
        drop.setDropAction(Qt::MoveAction);
        QApplication::sendEvent(&view, &drop);
        EXPECT_EQ(passedOn, row.passedOn);
        EXPECT_EQ(drop.dropAction(), row.passedOn ? Qt::CopyAction : Qt::MoveAction);
    }
}

TEST(Elision, KeepsBothEnds)
{
    const QString whole = u"IMG_0042 on the ferry <b>& back.jpeg"_s;
    MiddleElidedLabel line;
    line.setText(whole);
    FerrylaneHoverLabel name({});
    name.setLabel(whole);
    line.resize(120, 20);
    name.resize(120, 20);
    for (const QString& shown : {line.shownText(), name.shownText()}) {
        EXPECT_TRUE(shown.startsWith(u"IMG_"_s)) << shown.toStdString();
        EXPECT_TRUE(shown.contains(u'\u2026')) << shown.toStdString();
        EXPECT_TRUE(shown.endsWith(u".jpeg"_s)) << shown.toStdString();
    }
    line.resize(900, 20);
    name.resize(900, 20);
    EXPECT_EQ(line.shownText(), whole);
    EXPECT_EQ(name.shownText(), whole);
    EXPECT_EQ(app_test::accessibleName(name), whole);
}

TEST(ToolTips, ShowFileNamesAsTheyAre)
{
    EXPECT_EQ(toolTipText(u"a < b & c"_s), u"a < b & c"_s);
    EXPECT_TRUE(toolTipText(u"<img src=\"http://10.0.0.1/\">.jpg"_s).contains(u"&lt;img"_s));
}

TEST(WrappableText, BreaksLongNamesBetweenCharacters)
{
    const QString sentence = u"IMG_0042.jpg: Permission denied"_s;
    EXPECT_EQ(wrappableText(sentence), sentence);
    const QString ship = u"\U0001F6A2"_s;
    EXPECT_EQ(wrappableText(ship.repeated(50)),
        ship.repeated(24) + u'\u200B' + ship.repeated(24) + u'\u200B' + ship.repeated(2));
}

TEST(Windows, ShowTextsOfOthersAsText)
{
    const QString hostile = u"<b>x</b> &y\u202Egpj.exe\n"_s + QString(70'000, u'z');
    const QString expected = u"<b>x</b> &y\\u{202E}gpj.exe\\n"_s;
    const AskDialog dialog(nullptr, hostile, hostile);
    MiddleElidedLabel name;
    name.setText(hostile);
    QList<const QLabel*> labels{&name};
    for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
        labels.append(label);
    }
    ASSERT_EQ(labels.size(), 3);
    for (const QLabel* const label : labels) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        // In a text of several lines, a line break is one.
        EXPECT_TRUE(label->text().startsWith(expected.chopped(2))) << qPrintable(label->text());
        EXPECT_LE(label->text().remove(u'\u200B').size(), 330);
    }
    EXPECT_TRUE(name.text().startsWith(expected));
    EXPECT_EQ(name.text().size(), 300);
    const FerrylaneActionButton button(hostile, {});
    EXPECT_TRUE(button.title().startsWith(expected));
    EXPECT_EQ(button.title().size(), 300);
}

} // namespace
