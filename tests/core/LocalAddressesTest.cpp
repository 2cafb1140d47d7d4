#include "core/LocalAddresses.h"

#include "support/QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;
using platform::InterfaceAddress;
using platform::InterfaceAddresses;

namespace {

/// "NAME ADDRESS" for each; interfaces whose name begins with "lo" are loopback's.
InterfaceAddresses addresses(const QStringList& lines)
{
    InterfaceAddresses result;
    for (const QString& line : lines) {
        const QString name = line.section(u' ', 0, 0);
        const QString text = line.section(u' ', 1);
        const auto family
            = text.contains(u':') ? InterfaceAddress::Family::ipv6 : InterfaceAddress::Family::ipv4;
        result.append({name, name.startsWith(u"lo"), family, text});
    }
    return result;
}

} // namespace

TEST(LocalAddresses, choosesWhatPhonesReach)
{
    struct Row {
        QStringList interfaces;
        QString defaultRoute;
        QString host;
        QString linkLocal; ///< empty: none
    };
    const QString none;
    const QString eth = u"eth0"_s;
    for (const Row& row : {
             Row{{}, eth, u"127.0.0.1"_s, none},
             Row{{u"lo0 127.0.0.1"_s, u"en0 192.168.1.20"_s, u"en1 10.0.0.5"_s}, eth,
                 u"192.168.1.20"_s, none},
             Row{{u"lo 127.0.0.1"_s, u"a 10.0.0.5"_s, u"en0 192.168.1.20"_s}, eth, u"10.0.0.5"_s,
                 none},
             Row{{u"lo 10.1.1.1"_s, u"lo fe80::9%lo"_s, u"a 172.200.1.1"_s}, eth, u"172.200.1.1"_s,
                 none},
             Row{{u"a 8.8.8.8"_s, u"a 192.169.1.1"_s, u"a 110.0.0.1"_s, u"a 17.2.0.1"_s}, eth,
                 u"127.0.0.1"_s, none},
             Row{{u"en0 8.8.8.8"_s, u"en0 fe80::1c2:3ff:fe45:6789%en0"_s}, none,
                 u"[fe80::1c2:3ff:fe45:6789]"_s, u"fe80::1c2:3ff:fe45:6789"_s},
             Row{{u"en1 fe80::1%en1"_s, u"en0 2001:db8::1"_s, u"en0 FE80::2%en0"_s}, u"en1"_s,
                 u"[FE80::2]"_s, u"FE80::2"_s},
             Row{{u"a fe80::1%a"_s, u"eth0 10.0.0.5"_s, u"eth0 fe80::2%eth0"_s}, eth, u"10.0.0.5"_s,
                 u"fe80::2"_s},
             Row{{u"a fe80::1%a"_s, u"b fe80::2%b"_s}, eth, u"[fe80::1]"_s, u"fe80::1"_s},
             Row{{u"a fe80::1%a"_s, u"eth0 fe80::2%eth0"_s, u"en0 10.0.0.5"_s}, eth, u"10.0.0.5"_s,
                 u"fe80::1"_s},
             Row{{u"a 2001:db8::1"_s, u"a febf::1%a"_s}, eth, u"127.0.0.1"_s, none},
         }) {
        const auto given = addresses(row.interfaces);
        EXPECT_EQ(ferrylaneLocalHostForURL(given, row.defaultRoute), row.host);
        EXPECT_EQ(localIPv6LinkLocal(given, row.defaultRoute).value_or(none), row.linkLocal)
            << qPrintable(row.interfaces.join(u','));
    }
}
