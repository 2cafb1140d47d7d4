#include "phone/PairingLink.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

// The test vectors hold links, good and bad.

TEST(PairingLink, isReadAndWrittenWithItsZone)
{
    const QString key = u"AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8"_s;
    const struct {
        QString inLink, host, inHeader, inURL;
    } rows[] = {
        {u"192.168.1.20"_s, u"192.168.1.20"_s, u"192.168.1.20"_s, u"192.168.1.20"_s},
        {u"k\u00FCche.local"_s, u"xn--kche-0ra.local"_s, u"xn--kche-0ra.local"_s,
            u"xn--kche-0ra.local"_s},
        {u"[fe80::1]"_s, u"fe80::1"_s, u"[fe80::1]"_s, u"[fe80::1]"_s},
        {u"[fe80::1%eth0]"_s, u"fe80::1%eth0"_s, u"[fe80::1]"_s, u"[fe80::1%25eth0]"_s},
        {u"[fe80::1%25eth0]"_s, u"fe80::1%eth0"_s, u"[fe80::1]"_s, u"[fe80::1%25eth0]"_s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.inLink.toStdString());
        const auto link = ferrylane::phone::parsePairingLink(
            u"http://"_s + row.inLink + u":8788/?flkey="_s + key);
        ASSERT_TRUE(link);
        EXPECT_EQ(link->address.host, row.host);
        EXPECT_EQ(link->address.hostInHeader(), row.inHeader);
        EXPECT_EQ(link->address.baseURL(), u"http://"_s + row.inURL + u":8788"_s);
        EXPECT_EQ(ferrylane::parseTargetAddress(link->address.baseURL())->host, row.host);
    }
}
