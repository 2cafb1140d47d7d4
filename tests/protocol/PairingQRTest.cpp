#include "protocol/PairingQR.h"

#include "protocol/DisplayName.h"
#include "protocol/PairingLink.h"
#include "protocol/PairingUrl.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;

namespace {

// The usual texts are among the protocol's test vectors.

// The bytes 0 to 31, and 32 bytes whose text differs between the two alphabets.
const QString key = QStringLiteral("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8");
const QString standardKey = QString(u'/').repeated(42) + u"8="_s;

QString link(const QString& query)
{
    return u"http://192.168.1.7:8787/?"_s + query;
}

} // namespace

TEST(PairingQR, readsAddressAndKey)
{
    struct Row {
        QString text;
        QString baseURL;
        QString keyB64;
    };
    const QString usual = u"http://192.168.1.7:8787"_s;
    for (const Row& row :
        {
            Row{link(u"fl%6Bey="_s + standardKey), usual, standardKey},
            Row{u"http://u@phone.local:8787/a/b?flkey="_s + key, u"http://phone.local:8787"_s, key},
            Row{u"http://[fe80::1%25wlan0]:8787/?flkey="_s + key,
                u"http://[fe80::1%25wlan0]:8787"_s, key},
            Row{u"http://k\u00fcche.local:8787/?flkey="_s + key,
                u"http://xn--kche-0ra.local:8787"_s, key},
            Row{u"http://[fe80::1]:8787/?flkey="_s + key, u"http://[fe80::1]:8787"_s, key},
        }) {
        const auto target = parseFerrylanePairingQR(row.text);
        ASSERT_TRUE(target) << qPrintable(row.text);
        EXPECT_EQ(target->baseURL, row.baseURL);
        EXPECT_EQ(target->keyB64, row.keyB64);
        EXPECT_EQ(target->name, u"Android"_s);
    }
}

TEST(PairingQR, refusesEverythingElse)
{
    for (const QString& text : {
             u"ferrylane://192.168.1.7:8787/?flkey="_s + key,
             u"http://192.168.1.7:8787/#flkey="_s + key, link(u"flkey=&flkey="_s + key),
             link(u"flkey="_s + key.chopped(1) + u'*'),
             link(u"flkey="_s + key.chopped(1) + u"%zz"_s),
             link(u"flkey="_s + key.chopped(1) + u"%ff"_s),
             link(u"flkey="_s + key.chopped(1)), // 31 bytes and a rest
         }) {
        EXPECT_FALSE(parseFerrylanePairingQR(text)) << qPrintable(text);
    }
}

TEST(PairingQR, cleansTheName)
{
    struct Row {
        QString item;
        QString name;
    };
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s; // one character
    for (const Row& row : {
             Row{u"name=fl%20fl%20a"_s, u"fl a"_s},
             Row{u"name=Flat%20Phone"_s, u"Flat Phone"_s},
             Row{u"name=ferrylane%20a"_s, u"ferrylane a"_s},
             Row{u"name=a%26b%3Dc&name=d"_s, u"a&b=c"_s},
             Row{u"name=%ff"_s, u"Android"_s},
             Row{u"name="_s + family.repeated(81), family.repeated(80)},
         }) {
        const auto target = parseFerrylanePairingQR(link(u"flkey="_s + key + u'&' + row.item));
        ASSERT_TRUE(target) << qPrintable(row.item);
        EXPECT_EQ(target->name, row.name);
    }
}

TEST(DisplayName, isTheServicesWithoutTheProduct)
{
    struct Row {
        QString instance;
        QString name;
    };
    for (const Row& row : {
             Row{u"Pixel 8 FerryLane"_s, u"Pixel 8"_s},
             Row{u" fl Pixel  ferrylane "_s, u"Pixel"_s},
             Row{u"FL Office"_s, u"Office"_s},
             Row{u"a ferrylane ferrylane"_s, u"a ferrylane"_s},
             Row{u"Ferrylane"_s, u"Ferrylane"_s},
             Row{u"Myferrylane"_s, u"Myferrylane"_s},
             Row{u"flat"_s, u"flat"_s},
             Row{u" \n\t"_s, u"Android"_s},
             Row{QString(), u"Android"_s},
         }) {
        EXPECT_EQ(ferrylaneDisplayNameForDiscoveredService(row.instance), row.name);
    }
}

TEST(PairingLink, carriesHostKeyAndName)
{
    struct Row {
        QString name;
        QString encoded;
        QString read;
    };
    for (const Row& row : {
             Row{u"Office"_s, u"Office"_s, u"Office"_s},
             Row{u"K\u00fcche 1/2?"_s, u"K%C3%BCche%201/2?"_s, u"Küche 1/2?"_s},
             Row{QString(QChar(0xD800)), u"Mac"_s, u"Mac"_s},
         }) {
        const QString named = ferrylanePairingLink(u"10.0.0.5"_s, 8788, key, row.name);
        EXPECT_EQ(named, u"http://10.0.0.5:8788/?flkey="_s + key + u"&name="_s + row.encoded);
        const auto read = parsePairingUrl(named);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->name, row.read);
    }
}
