#include "phone/PairingLink.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using ferrylane::phone::parsePairingLink;

namespace {

// The bytes 0 to 31.
const QString key = QStringLiteral("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8");

} // namespace

TEST(PairingLink, readsHostPortAndKey)
{
    struct Row {
        QString link;
        QString host;
        int port;
        QString hostInHeader;
    };
    const Row rows[] = {
        {u"http://192.168.1.20:8788/?flkey="_s + key, u"192.168.1.20"_s, 8788, u"192.168.1.20"_s},
        {u"http://kitchen.local:1/?flkey="_s + key + u"&name=Kitchen%20PC"_s, u"kitchen.local"_s, 1,
            u"kitchen.local"_s},
        {u"http://[fe80::1c2:3ff]:65535/?flkey="_s + key, u"fe80::1c2:3ff"_s, 65535,
            u"[fe80::1c2:3ff]"_s},
        {u"http://10.0.0.5:8788?flkey="_s + key + u'=', u"10.0.0.5"_s, 8788, u"10.0.0.5"_s},
        {u"http://10.0.0.5:8788/?name=a&flkey="_s + key + u"&flkey=other"_s, u"10.0.0.5"_s, 8788,
            u"10.0.0.5"_s},
    };
    for (const Row& row : rows) {
        const auto link = parsePairingLink(row.link);
        ASSERT_TRUE(link) << qPrintable(row.link);
        EXPECT_EQ(link->host, row.host);
        EXPECT_EQ(link->port, row.port);
        EXPECT_EQ(link->hostInHeader(), row.hostInHeader);
        for (std::size_t i = 0; i < platform::SecretKey::length; ++i) {
            EXPECT_EQ(link->key.bytes()[i], std::byte(i)) << qPrintable(row.link);
        }
    }
}

TEST(PairingLink, refusesEverythingElse)
{
    const QString rows[] = {
        u""_s,
        u"192.168.1.20"_s,
        u"https://192.168.1.20:8788/?flkey="_s + key,
        u"http://192.168.1.20/?flkey="_s + key,
        u"http://192.168.1.20:0/?flkey="_s + key,
        u"http://192.168.1.20:65536/?flkey="_s + key,
        u"http://:8788/?flkey="_s + key,
        u"http://[fe80::1:8788/?flkey="_s + key,
        u"http://192.168.1.20:8788/"_s,
        u"http://192.168.1.20:8788/?FLKEY="_s + key,
        u"http://192.168.1.20:8788/?flkey="_s,
        u"http://192.168.1.20:8788/?flkey="_s + key.chopped(1),
        u"http://192.168.1.20:8788/?flkey="_s + key + u"AAAA"_s,
        u"http://192.168.1.20:8788/?flkey="_s + key.chopped(1) + u'*',
    };
    for (const QString& row : rows) {
        EXPECT_FALSE(parsePairingLink(row)) << qPrintable(row);
    }
}
