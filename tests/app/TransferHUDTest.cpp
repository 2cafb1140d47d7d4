#include "app/TransferHUD.h"

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

    TransferHUD window({});
    window.present();
    const QRect usable = window.screen()->availableGeometry();
    EXPECT_EQ(window.size(), QSize(340, 112));
    EXPECT_EQ(window.pos(), TransferHUD::cornerOf(usable, window.size()));
}

TEST(TransferHUD, ShowsTheTransferAndStops)
{
    int stops = 0;
    TransferHUD window([&] { ++stops; });
    window.present();
    auto* const bar = window.findChild<QProgressBar*>();
    struct Row {
        double percent;
        QString read;
    };
    const Row rows[]{
        {0, u"0%"_s}, {42.3, u"42%"_s}, {170, u"100%"_s}, {-3, u"0%"_s}, {std::nan(""), u"0%"_s}};
    for (const Row& row : rows) {
        window.setTransfer(u"photo.jpg"_s, row.percent, u"100.0%   1103.1 MB/s"_s);
        EXPECT_EQ(bar->text(), row.read);
    }
    EXPECT_EQ(app_test::clippedTexts(window), QStringList());
    QTest::mouseClick(&app_test::buttonNamed(window, u"Stop"_s), Qt::LeftButton);
    EXPECT_EQ(stops, 1);
}

} // namespace
