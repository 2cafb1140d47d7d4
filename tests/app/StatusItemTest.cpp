#include "app/StatusItem.h"

#include "app/TitleIcon.h"
#include "support/QtPrinting.h"

#include <QIcon>
#include <QMenu>

#include <gtest/gtest.h>

#include <set>

using namespace ferrylane;
using namespace Qt::StringLiterals;

namespace {

class StatusItemTest : public ::testing::Test {
protected:
    std::function<void()> saying(const QString& what)
    {
        return [this, what] { intents_ << what; };
    }

    QStringList intents_;
    StatusItem item_{StatusItem::Intents{
        .show = saying(u"show"_s),
        .openReceivedFiles = saying(u"open"_s),
        .pairDevice = saying(u"pair"_s),
        .showPairedDevices = saying(u"devices"_s),
        .restart = saying(u"restart"_s),
        .quit = saying(u"quit"_s),
        .toggleService = saying(u"toggle"_s),
    }};
};

TEST_F(StatusItemTest, MenuInItsOrder)
{
    struct Row {
        QString text, shortcut, intent;
    };
    const Row rows[]{
        {u"Show Ferrylane"_s, {}, u"show"_s},
        {u"Service running"_s, {}, u"toggle"_s},
        {u"Open Received Files"_s, {}, u"open"_s},
        {u"Pair Device…"_s, {}, u"pair"_s},
        {u"Paired Devices…"_s, {}, u"devices"_s},
        {{}, {}, {}}, // the separator
        {u"Restart Ferrylane"_s, u"Ctrl+R"_s, u"restart"_s},
        {u"Quit Ferrylane"_s, u"Ctrl+Q"_s, u"quit"_s},
    };
    const QList<QAction*> actions = item_.menu().actions();
    ASSERT_EQ(actions.size(), static_cast<qsizetype>(std::size(rows)));
    for (qsizetype i = 0; i < actions.size(); ++i) {
        const Row& row = rows[i];
        EXPECT_EQ(actions[i]->text(), row.text);
        EXPECT_EQ(actions[i]->shortcut().toString(QKeySequence::PortableText), row.shortcut);
        intents_.clear();
        actions[i]->trigger();
        EXPECT_EQ(intents_.join(u' '), row.intent);
    }
}

TEST_F(StatusItemTest, MarkFollowsTheServiceAndNotTheClick)
{
    QAction& service = *item_.menu().actions()[1];
    item_.setServiceRunning(true);
    service.trigger();
    EXPECT_TRUE(service.isChecked());
    item_.setServiceRunning(false);
    EXPECT_FALSE(service.isChecked());
}

TEST_F(StatusItemTest, TitleIsToolTipAndIcon)
{
    std::set<QByteArray> pictures;
    for (const QString& title : {u"⇄"_s, u"⇄ …"_s, u"⇄ 3"_s, u"⇄ 4"_s, u"⇄ 1234"_s}) {
        item_.setTitle(title);
        EXPECT_EQ(item_.toolTip(), title);
        const QPixmap picture = titleIcon(title).pixmap(QSize(22, 22), 2);
        EXPECT_EQ(picture.size(), QSize(44, 44));
        const QImage image = picture.toImage();
        pictures.emplace(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes());
    }
    EXPECT_EQ(pictures.size(), 5U);
    item_.setTitle(u"⇄ 3"_s);
    item_.renew();
    EXPECT_EQ(item_.toolTip(), u"⇄ 3"_s);
}

} // namespace
