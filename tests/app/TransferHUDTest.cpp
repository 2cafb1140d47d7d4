#include "app/windows/TransferHUD.h"

#include "Controls.h"
#include "support/QtPrinting.h"

#include <QProgressBar>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>

using namespace ferrylane;
using namespace Qt::StringLiterals;

namespace {

TEST(TransferHUD, StandsInTheCornerOfTheUsableArea)
{
    struct Row {
        QRect usableArea;
        QPoint corner;
    };
    const Row rows[]{
        {{0, 0, 1920, 1080}, {1562, 18}},
        {{0, 30, 1920, 1050}, {1562, 48}},
        {{-1280, 24, 1280, 700}, {-358, 42}},
    };
    for (const Row& row : rows) {
        const QPoint corner = TransferHUD::cornerOf(row.usableArea, {340, 112});
        EXPECT_EQ(corner.x(), row.corner.x());
        EXPECT_EQ(corner.y(), row.corner.y());
    }

    TransferHUD window;
    window.begin({});
    const QRect usable = window.screen()->availableGeometry();
    EXPECT_EQ(window.size(), QSize(340, 112));
    EXPECT_EQ(window.pos(), TransferHUD::cornerOf(usable, window.size()));
}

TEST(TransferHUD, ShowsTheTransferAndStops)
{
    int stops = 0;
    TransferHUD window;
    QObject::connect(&window, &TransferHUD::stopRequested, [&] { ++stops; });
    window.finish(u"photo.jpg"_s);
    EXPECT_FALSE(window.isVisible());
    TransferState state{.fileName = u"photo.jpg"_s, .speed = 1103.1};
    window.begin(state);
    auto* const bar = window.findChild<QProgressBar*>();
    struct Row {
        double fraction;
        QString read;
    };
    const Row rows[]{
        {0, u"0%"_s}, {0.423, u"42%"_s}, {1.7, u"100%"_s}, {-3, u"0%"_s}, {std::nan(""), u"0%"_s}};
    for (const Row& row : rows) {
        state.fraction = row.fraction;
        window.setState(state);
        EXPECT_EQ(bar->text(), row.read);
    }
    EXPECT_EQ(app_test::clippedTexts(window), QStringList());
    QTest::mouseClick(&app_test::buttonNamed(window, u"Stop"_s), Qt::LeftButton);
    EXPECT_EQ(stops, 1);

    // It stays for a moment, and for the next file.
    window.finish(u"photo.jpg"_s);
    window.begin(state);
    QTest::qWait(1600);
    EXPECT_TRUE(window.isVisible());
    window.finish(u"photo.jpg"_s);
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window.isVisible(); }));
    window.begin(state);
    window.stop();
    EXPECT_FALSE(window.isVisible());
}

} // namespace
