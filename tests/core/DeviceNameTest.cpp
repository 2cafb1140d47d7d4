#include "core/DeviceName.h"

#include "core/Settings.h"
#include "support/PrivateUserFolders.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;

TEST(DeviceName, isTheStoredOneWithoutThePrefixElseTheHosts)
{
    struct Row {
        const char* stored;
        const char* name;
    };
    for (const Row& row : {
             Row{"Office", "Office"},
             Row{"  FL Office Mac ", "Office Mac"},
             Row{"Ferrylane Kitchen", "Kitchen"},
             Row{"fErRyLaNe   Kitchen\n", "Kitchen"},
             // Not followed by a blank, so no prefix.
             Row{"Flat Mac", "Flat Mac"},
             Row{"Ferrylanes", "Ferrylanes"},
             Row{"fl\u00a0Office", "fl\u00a0Office"},
             Row{"fl\tOffice", "fl\tOffice"},
             // A blank with an accent is another character.
             Row{"fl \u0301Office", "fl \u0301Office"},
             // One prefix, once.
             Row{"fl fl Office", "fl Office"},
             Row{"fl ferrylane Office", "ferrylane Office"},
             Row{"Ferrylane FL Office", "FL Office"},
             // Nothing is left, or was there.
             Row{"", "host"},
             Row{" \t\r\n ", "host"},
             Row{"fl ", "host"},
             Row{"  FL  \n", "host"},
             // Without its blank it is a name.
             Row{"FL", "FL"},
             Row{"\tfl\t", "fl"},
             Row{"Ferrylane", "Ferrylane"},
             Row{"Ferrylane ", "Ferrylane"},
         }) {
        EXPECT_EQ(ferrylaneDeviceSuffix(QString::fromUtf8(row.stored), QStringLiteral("host")),
            QString::fromUtf8(row.name))
            << '[' << row.stored << ']';
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
    struct Row {
        QString typed, kept;
    };
    const Row rows[]{{u"  fl Studio  "_s, u"Studio"_s}, {u"Fl  x"_s, u"x"_s}, {u"fl "_s, {}},
        {u"fl"_s, u"fl"_s}, {u" \n\t"_s, {}}, {u"flat"_s, u"flat"_s},
        {u"ferrylane x"_s, u"ferrylane x"_s}, {QString(60, u'n'), QString(40, u'n')},
        {QString(u"\U0001F600"_s).repeated(50), QString(u"\U0001F600"_s).repeated(40)}};
    for (const Row& row : rows) {
        EXPECT_EQ(typedDeviceName(row.typed), row.kept) << qPrintable(row.typed);
    }
}
