#include "core/PercentCoding.h"

#include <gtest/gtest.h>

using namespace ferrylane;

TEST(PercentDecoding, replacesEscapesAndKeepsTheRest)
{
    struct Row {
        const char* encoded;
        QString text;
    };
    for (const Row& row : {
             Row{"", QString()},
             Row{"report.txt", QStringLiteral("report.txt")},
             Row{"a+b c", QStringLiteral("a+b c")},
             Row{"%41%7a%2F", QStringLiteral("Az/")},
             Row{"%c3%a4%C3%A4", QStringLiteral("\u00e4\u00e4")},
             // Part of a character plain is not possible, but whole ones mix with escaped ones.
             Row{"\xc3\xa4%C3%A4", QStringLiteral("\u00e4\u00e4")},
             Row{"%F0%9F%98%80", QStringLiteral("\U0001F600")},
             Row{"%25", QStringLiteral("%")},
             // Once only.
             Row{"%2541", QStringLiteral("%41")},
             Row{"%00", QString(1, QChar(0))},
             Row{"%0D%0A", QStringLiteral("\r\n")},
             // A byte order mark and what is no character are text like any other.
             Row{"%EF%BB%BFa", QStringLiteral("\uFEFFa")},
             Row{"%EF%BF%BF", QStringLiteral("\uFFFF")},
             Row{"%F4%8F%BF%BF", QStringLiteral("\U0010FFFF")},
         }) {
        EXPECT_EQ(percentDecode(QString::fromUtf8(row.encoded)), std::optional(row.text))
            << row.encoded;
    }
}

TEST(PercentDecoding, refusesBadEscapesAndBadUtf8)
{
    for (const char* const encoded : {
             // Escapes without two hexadecimal digits.
             "%",
             "a%",
             "%4",
             "%4g",
             "%g4",
             "%%41",
             "% 41",
             "%+4",
             "%-4",
             "%0x41",
             "%4\xc3\xa4",
             "%\xc3\xa4",
             // Not UTF-8: alone, cut off, overlong, a surrogate, beyond the last code point.
             "%80",
             "%FF",
             "%C3",
             "%C3a",
             "%E2%82",
             "%F0%9F%98",
             "%C0%80",
             "%C1%81",
             "%E0%80%80",
             "%F0%80%80%80",
             "%ED%A0%80",
             "%ED%BF%BF",
             "%ED%A0%BD%ED%B8%80",
             "%F4%90%80%80",
             "%F8%88%80%80%80",
             // An escaped first byte does not go with a plain character.
             "%C3\xc2\xa4",
         }) {
        EXPECT_FALSE(percentDecode(QString::fromUtf8(encoded))) << encoded;
    }
    EXPECT_FALSE(percentDecode(QString(QChar(0xD83D)))) << "a lone surrogate";
}

TEST(PercentEncoding, keepsWhatAQueryMayHold)
{
    const QString kept = QStringLiteral("ABCXYZabcxyz0189!$&'()*+,-./:;=?@_~");
    EXPECT_EQ(percentEncodeForQuery(kept), kept);
    // All of ASCII, so that nothing else stays.
    int escaped = 0;
    for (char16_t c = 0; c < 0x80; ++c) {
        const QString encoded = percentEncodeForQuery(QString(QChar(c)));
        if (encoded.size() == 1) continue;
        EXPECT_EQ(encoded.toStdString(),
            QStringLiteral("%%1").arg(c, 2, 16, QChar(u'0')).toUpper().toStdString());
        ++escaped;
    }
    EXPECT_EQ(escaped, 128 - 26 - 26 - 10 - 19);
    EXPECT_EQ(percentEncodeForQuery(u"Küche #1"), QStringLiteral("K%C3%BCche%20%231"));
    EXPECT_EQ(percentEncodeForQuery(u"\U0001F600"), QStringLiteral("%F0%9F%98%80"));
}

TEST(PercentEncoding, keepsLettersMarksAndNumbersOfEveryScriptInFileNames)
{
    struct Row {
        const char* name;
        const char* encoded;
    };
    for (const Row& row : {
             Row{"", ""},
             Row{"IMG_2024-01~2.jpeg", "IMG_2024-01~2.jpeg"},
             Row{"a b/c%d+e", "a%20b%2Fc%25d%2Be"},
             Row{"!$&'()*,:;=?@[]{}|\\^`<>\"#",
                 "%21%24%26%27%28%29%2A%2C%3A%3B%3D%3F%40%5B%5D%7B%7D"
                 "%7C%5C%5E%60%3C%3E%22%23"},
             Row{"\r\n\x7f", "%0D%0A%7F"},
             Row{"Größe", "Größe"},
             Row{"文件名", "文件名"},
             // A combining accent (Mn), an enclosing mark (Me), a Roman numeral (Nl), one half (No)
             // and an Arabic digit (Nd).
             Row{"e\u0301\u20dd\u2167\u00bd\u0663", "e\u0301\u20dd\u2167\u00bd\u0663"},
             // A letter beyond the basic plane stays, an emoji, a dash and a joiner do not.
             Row{"\U00010400\U0001F600", "\U00010400%F0%9F%98%80"},
             Row{"a\u2014b\u200dc", "a%E2%80%94b%E2%80%8Dc"},
             // A byte order mark is a character wherever it stands.
             Row{"a\ufeff", "a%EF%BB%BF"},
             Row{"\u00a0", "%C2%A0"},
         }) {
        const QString name = QString::fromUtf8(row.name);
        EXPECT_EQ(percentEncodeFileName(name).toUtf8(), QByteArray(row.encoded)) << row.name;
        EXPECT_EQ(percentDecode(percentEncodeFileName(name)), std::optional(name)) << row.name;
    }
}
