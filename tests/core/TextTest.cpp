#include "core/Text.h"

#include <gtest/gtest.h>

using namespace ferrylane;

TEST(Characters, areAsPeopleSeeThem)
{
    const std::pair<const char*, qsizetype> rows[]{{"", 0}, {"abc", 3}, {"\r\n", 1}, {"\n\r", 2},
        {"e\u0301", 1}, {"\U0001F600", 1}, {"\U0001F44D\U0001F3FD", 1},
        {"\U0001F468\u200d\U0001F469\u200d\U0001F467", 1},
        {"\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7", 2}, {"\u1100\u1161\u11a8", 1}};
    for (const auto& row : rows) {
        const QString text = QString::fromUtf8(row.first);
        EXPECT_EQ(characterCount(text), row.second) << row.first;
        EXPECT_FALSE(longerThan(text, row.second)) << row.first;
        EXPECT_EQ(firstCharacters(text, row.second), text) << row.first;
        EXPECT_EQ(firstCharacters(text, row.second + 1), text) << row.first;
        EXPECT_EQ(longerThan(text, row.second - 1), row.second > 0) << row.first;
    }
}

TEST(Characters, areNeverCutApart)
{
    const QString family = QStringLiteral("\U0001F468\u200d\U0001F469\u200d\U0001F467");
    const QString text = QStringLiteral("ae\u0301") + family + u'z';
    EXPECT_EQ(firstCharacters(text, 0), QString());
    EXPECT_EQ(firstCharacters(text, 1), QStringLiteral("a"));
    EXPECT_EQ(firstCharacters(text, 2), QStringLiteral("ae\u0301"));
    EXPECT_EQ(firstCharacters(text, 3), QStringLiteral("ae\u0301") + family);
    EXPECT_EQ(firstCharacters(text, 4), text);
}

TEST(OneLine, showsWhatWouldBreakIt)
{
    const std::pair<QString, const char*> rows[]{{QString(), ""},
        {QStringLiteral("C:\\new \u00fc\u00b7\U0001F600"), "C:\\new ü·\U0001F600"},
        {QStringLiteral("a\r\nb\tc"), "a\\r\\nb\\tc"}, {QString(QChar(0)), "\\u{0}"},
        {QStringLiteral("\u001b[31m\u007f"), "\\u{1B}[31m\\u{7F}"},
        {QStringLiteral("\u0080\u0085\u009f\u00a0"), "\\u{80}\\u{85}\\u{9F}\u00a0"},
        {QStringLiteral("\u2027\u2028\u2029\u202a"), "\u2027\\u{2028}\\u{2029}\\u{202A}"},
        {QStringLiteral("\u202e\u202f\u2065\u2066\u2069\u206a"),
            "\\u{202E}\u202f\u2065\\u{2066}\\u{2069}\u206a"}};
    for (const auto& [text, line] : rows) {
        EXPECT_EQ(onOneLine(text).toUtf8(), QByteArray(line));
        EXPECT_EQ(textForWindow(text).toUtf8(), QByteArray(line));
    }
}

TEST(ShortText, isCutByWholeCharacters)
{
    const QString family = QStringLiteral("\U0001F468\u200d\U0001F469\u200d\U0001F467");
    EXPECT_EQ(textForWindow(family.repeated(300)), family.repeated(300));
    EXPECT_EQ(textForWindow(family.repeated(301)), family.repeated(299) + u'\u2026');
    EXPECT_EQ(textForLog(QString(1000, u'x')), QString(1000, u'x'));
    EXPECT_EQ(textForLog(QString(1001, u'x')), QString(999, u'x') + u'\u2026');
    // What a control character becomes counts, too.
    EXPECT_EQ(characterCount(textForWindow(QString(300, u'\n'))), 300);
    // One character of a million marks, and half a character where the limit falls.
    EXPECT_LT(textForWindow(u'e' + QString(1'000'000, u'\u0301')).size(), 5000);
    const QString marks
        = QStringLiteral("e\U0001D165").repeated(1) + QStringLiteral("\U0001D165").repeated(5000);
    EXPECT_TRUE(textForWindow(marks).isValidUtf16());
}
