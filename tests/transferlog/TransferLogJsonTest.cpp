#include "transferlog/TransferLog.h"

#include <gtest/gtest.h>

#include <limits>

using namespace ferrylane;

namespace {

constexpr qint64 lowest = std::numeric_limits<qint64>::min();
constexpr qint64 highest = std::numeric_limits<qint64>::max();

/// An entry's object in which one member is replaced, or left out where `value` is empty.
QByteArray entryWith(const QByteArray& key, const QByteArray& value)
{
    const std::pair<const char*, const char*> members[] = {{"date", "0"}, {"direction", "\"Sent\""},
        {"fileName", "\"f\""}, {"peer", "\"p\""}, {"result", "\"Failed\""}, {"size", "7"}};
    QByteArrayList parts;
    for (const auto& [name, standard] : members) {
        const QByteArray text = key == name ? value : QByteArray(standard);
        if (!text.isEmpty()) parts << '"' + QByteArray(name) + "\":" + text;
    }
    return '{' + parts.join(',') + '}';
}

QDateTime utc(const char* text)
{
    return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODateWithMs);
}

} // namespace

TEST(TransferLogJson, comesBackAsItWas)
{
    const QDateTime date = utc("2026-11-16T20:22:58.123Z");
    const QList<FerrylaneTransferLogEntry> entries{
        {date, QStringLiteral("Received"), QStringLiteral("a \"b\" \\ \u00fc\U0001F600\n.txt"), {},
            QStringLiteral("Completed"), 0},
        {utc("1999-12-31T23:59:59.999Z"), QStringLiteral("Sent"), QString(),
            QStringLiteral("Pixel"), QStringLiteral("Failed"), std::nullopt},
        {date, {}, {}, {}, {}, highest},
        {date, {}, {}, {}, {}, lowest},
        // More than a double can tell apart.
        {date, {}, {}, {}, {}, (1LL << 53) + 1},
    };
    EXPECT_EQ(parseTransferLogJson(transferLogJson(entries)), std::optional(entries));
}

TEST(TransferLogJson, isWrittenCompactlyWithSecondsSince2001)
{
    const QByteArray json
        = transferLogJson({{utc("2001-01-01T00:00:01.500Z"), QStringLiteral("Sent"),
            QStringLiteral("f"), QStringLiteral("p"), QStringLiteral("Failed"), std::nullopt}});
    EXPECT_EQ(
        json, R"([{"date":1.5,"direction":"Sent","fileName":"f","peer":"p","result":"Failed"}])");
}

TEST(TransferLogJson, isRefusedWholeForOneBadElement)
{
    struct Row {
        const char* key;
        const char* value;
    };
    for (const Row& row : {
             Row{"date", ""},
             Row{"date", "null"},
             Row{"date", "\"2026-11-16T20:22:58Z\""},
             Row{"date", "1e13"},
             Row{"date", "-1e300"},
             Row{"direction", ""},
             Row{"fileName", ""},
             Row{"peer", ""},
             Row{"result", ""},
             Row{"size", "\"7\""},
             Row{"size", "1.5"},
             Row{"size", "1e19"},
             Row{"size", "9223372036854775808"},
         }) {
        const QByteArray json = '[' + entryWith("", "") + ',' + entryWith(row.key, row.value) + ']';
        EXPECT_FALSE(parseTransferLogJson(json)) << json.constData();
    }
}

TEST(TransferLogJson, isRefusedUnlessAllOfItIsAnArrayOfObjects)
{
    const QByteArray entry = entryWith("fileName", R"("a ]} \\")");
    EXPECT_EQ(parseTransferLogJson("\xEF\xBB\xBF [" + entry + " ,\n" + entry + "]")->size(), 2);
    EXPECT_EQ(parseTransferLogJson("[ ]\n")->size(), 0);
    for (const QByteArray& json : {QByteArray(), QByteArray("{}"), QByteArray("["), QByteArray("]"),
             QByteArray("[,]"), QByteArray("[1]"), entry, '[' + entry, '[' + entry + ",]",
             '[' + entry + "]]", '[' + entry + "] " + entry, '[' + entry + entry + ']',
             '[' + entry + ",[]]", '[' + entry.chopped(1) + ']', '[' + entry.sliced(1) + ']',
             "[{" + entry + "}]", '[' + entry + "\v]"}) {
        EXPECT_FALSE(parseTransferLogJson(json)) << json.constData();
    }
}

TEST(TransferLogJson, mayLackTheSizeAndHoldOtherMembers)
{
    struct Row {
        const char* value;
        std::optional<qint64> size;
    };
    for (const Row& row :
        {Row{"", std::nullopt}, Row{"null", std::nullopt}, Row{"0", 0}, Row{"-1", -1},
            Row{"9223372036854775807", highest}, Row{"7,\"other\":[{\"date\":null}]", 7}}) {
        const auto entries = parseTransferLogJson(" [ " + entryWith("size", row.value) + " ]\n");
        ASSERT_TRUE(entries) << row.value;
        EXPECT_EQ(entries->first().size, row.size) << row.value;
    }
}
