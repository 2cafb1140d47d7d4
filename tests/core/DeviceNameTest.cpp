#include "core/DeviceName.h"

#include "core/Settings.h"
#include "support/PrivateUserFolders.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;

TEST(DeviceName, isTheStoredOneWithoutThePrefixElseTheHosts)
{
    // Not followed by a blank it is no prefix, and a blank with an accent is another character; one
    // prefix goes, once; nothing may be left, or have been there; without its blank it is a name.
    const std::pair<const char*, const char*> rows[]{{"Office", "Office"},
        {"  FL Office Mac ", "Office Mac"}, {"Ferrylane Kitchen", "Kitchen"},
        {"fErRyLaNe   Kitchen\n", "Kitchen"}, {"Flat Mac", "Flat Mac"},
        {"Ferrylanes", "Ferrylanes"}, {"fl\u00a0Office", "fl\u00a0Office"},
        {"fl\tOffice", "fl\tOffice"}, {"fl \u0301Office", "fl \u0301Office"},
        {"fl fl Office", "fl Office"}, {"fl ferrylane Office", "ferrylane Office"},
        {"Ferrylane FL Office", "FL Office"}, {"", "host"}, {" \t\r\n ", "host"}, {"fl ", "host"},
        {"  FL  \n", "host"}, {"FL", "FL"}, {"\tfl\t", "fl"}, {"Ferrylane", "Ferrylane"},
        {"Ferrylane ", "Ferrylane"}};
    for (const auto& [stored, name] : rows) {
        EXPECT_EQ(ferrylaneDeviceSuffix(QString::fromUtf8(stored), QStringLiteral("host")),
            QString::fromUtf8(name))
            << '[' << stored << ']';
    }
    EXPECT_EQ(ferrylaneDeviceSuffix(std::nullopt, QStringLiteral(" my host\n")),
        QStringLiteral("my host"));
}

TEST(DeviceName, followsTheSettingAtEveryCall)
{
    const support::PrivateUserFolders home;
    EXPECT_EQ(ferrylaneDeviceSuffix(), defaultFerrylaneDeviceSuffix());
    EXPECT_FALSE(defaultFerrylaneDeviceSuffix().isEmpty());

    userSettings().set(ferrylaneDeviceNameKey, QStringLiteral("FL Bench"));
    EXPECT_EQ(ferrylaneDeviceSuffix(), QStringLiteral("Bench"));
    EXPECT_EQ(ferrylaneDeviceName(), QStringLiteral("Bench"));

    // With its blank it must survive the settings file, too.
    userSettings().set(ferrylaneDeviceNameKey, QStringLiteral("fl "));
    EXPECT_EQ(ferrylaneDeviceSuffix(), defaultFerrylaneDeviceSuffix());
}

TEST(DeviceName, isKeptAsTypedWithoutTheShortPrefix)
{
    const std::pair<QString, QString> rows[]{{u"  fl Studio  "_s, u"Studio"_s},
        {u"Fl  x"_s, u"x"_s}, {u"fl "_s, {}}, {u"fl"_s, u"fl"_s}, {u" \n\t"_s, {}},
        {u"flat"_s, u"flat"_s}, {u"ferrylane x"_s, u"ferrylane x"_s},
        {QString(60, u'n'), QString(40, u'n')},
        {QString(u"\U0001F600"_s).repeated(50), QString(u"\U0001F600"_s).repeated(40)}};
    for (const auto& [typed, kept] : rows) {
        EXPECT_EQ(typedDeviceName(typed), kept) << qPrintable(typed);
    }
}
