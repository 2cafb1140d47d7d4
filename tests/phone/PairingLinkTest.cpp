#include "phone/PairingLink.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

// The test vectors hold links, good and bad.

TEST(PairingLink, putsIPv6InBracketsForAHeader)
{
    const QString key = u"AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8"_s;
    for (const QString& host : {u"192.168.1.20"_s, u"kitchen.local"_s, u"[fe80::1]"_s}) {
        const auto link
            = ferrylane::phone::parsePairingLink(u"http://"_s + host + u":8788/?flkey="_s + key);
        ASSERT_TRUE(link) << qPrintable(host);
        EXPECT_EQ(link->hostInHeader(), host);
    }
}
