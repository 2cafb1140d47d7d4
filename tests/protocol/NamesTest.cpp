#include "protocol/PairingLink.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;

// The test vectors hold links, codes and datagrams.

TEST(DisplayName, isTheServicesWithoutTheProduct)
{
    const struct {
        QString instance, name;
    } rows[] = {
        {u"Pixel 8 FerryLane"_s, u"Pixel 8"_s},
        {u" fl Pixel  ferrylane "_s, u"Pixel"_s},
        {u"FL Office"_s, u"Office"_s},
        {u"a ferrylane ferrylane"_s, u"a ferrylane"_s},
        {u"Ferrylane"_s, u"Ferrylane"_s},
        {u"Myferrylane"_s, u"Myferrylane"_s},
        {u"flat"_s, u"flat"_s},
        {u" \n\t"_s, u"Android"_s},
        {QString(), u"Android"_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ferrylaneDisplayNameForDiscoveredService(row.instance), row.name);
    }
}

TEST(PairingLink, hasANameThoughTheComputersIsNoText)
{
    const QString link = ferrylanePairingLink(u"10.0.0.5"_s, 8788, u"k"_s, QString(QChar(0xD800)));
    EXPECT_EQ(link, u"http://10.0.0.5:8788/?flkey=k&name=Mac"_s);
}
