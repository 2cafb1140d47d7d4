#include "platform/linux/AvahiServiceName.h"

#include "support/QtPrinting.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(AvahiServiceNameTest, FitsIntoALabel)
{
    const QString x = QStringLiteral("x");
    const QString family = QStringLiteral("👩‍👩‍👧"); // 18 bytes
    const QString accent(QChar(0x0301));                         // 2 bytes
    const struct {
        QString name;
        QString expected;
    } rows[] = {
        {QString(), QString()},
        {QStringLiteral("Desk – Ä"), QStringLiteral("Desk – Ä")},
        {QStringLiteral("\tDe\u0000s\u007Fk\r\n"), QStringLiteral("Desk")},
        {x.repeated(63), x.repeated(63)},
        {x.repeated(64), x.repeated(63)},
        {x.repeated(100'000), x.repeated(63)},
        {QStringLiteral("ä").repeated(40), QStringLiteral("ä").repeated(31)},
        {x.repeated(45) + family, x.repeated(45) + family},
        {x.repeated(46) + family, x.repeated(46)},
        {x.repeated(61) + accent, x.repeated(61) + accent},
        {x.repeated(62) + accent, x.repeated(61)},
        {x + accent.repeated(40), x + accent.repeated(31)},
        {QStringLiteral("👍").repeated(40), QStringLiteral("👍").repeated(15)},
        {x.repeated(63) + QStringLiteral("👍"), x.repeated(63)},
        {QString(QChar(0xDC00)), QStringLiteral("?")},
    };
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(serviceName(name), expected.toUtf8());
    }
}

TEST(AvahiServiceNameTest, CountsUp)
{
    EXPECT_EQ(alternativeServiceName("Desk"), "Desk #2");
    EXPECT_EQ(alternativeServiceName("Desk #2"), "Desk #3");
    const QByteArray longest = QByteArray("ä").repeated(31);
    EXPECT_EQ(alternativeServiceName(longest), QByteArray("ä").repeated(30) + " #2");
}

} // namespace
} // namespace platform
