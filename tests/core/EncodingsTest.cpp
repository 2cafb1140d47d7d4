#include "core/Encodings.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ferrylane;

TEST(Base64Url, decodesWithAndWithoutPaddingInBothAlphabets)
{
    const QByteArray allOnes("\xfb\xff\xbf", 3);
    // The lower bits of the last two's last character belong to no byte.
    const std::vector<std::pair<const char*, QByteArray>> rows{{"", ""}, {"Zg==", "f"},
        {"Zg=", "f"}, {"Zg", "f"}, {"Zm8=", "fo"}, {"Zm8", "fo"}, {"Zm9v", "foo"},
        {"Zm9vYmFy", "foobar"}, {"-_-_", allOnes}, {"+/+/", allOnes}, {"-/+_", allOnes},
        {"AAAA", QByteArray(3, '\0')}, {"Zh", "f"}, {"Zm9=", "fo"}};
    for (const auto& [text, bytes] : rows) {
        EXPECT_EQ(base64URLDecode(QString::fromLatin1(text)), std::optional(bytes)) << text;
        EXPECT_EQ(decodeFerrylaneBase64URL(QString::fromLatin1(text)), std::optional(bytes));
    }
}

TEST(Base64Url, refusesEverythingElse)
{
    // Lengths that no bytes have; padding that is too much, too early or alone; characters that are
    // not in the alphabet.
    for (const char* const text : {"A", "AAAAA", "Zm9vY", "=", "==", "====", "A===", "Zg===",
             "Zm9v=", "Zm9v====", "Zg==Zg==", "Z=g=", "=Zg=", "Zg=A", "Zm9 v", " Zm9v", "Zm9v ",
             "Zm9v\n", "Zm9v\r\n", "Zm\t9", "Zm9v!", "Zm9.", "Z%3D", "Zm9\xc3\xa9",
             "\xef\xbc\xba\xef\xbc\xad\xef\xbc\x99\xef\xbc\xb6", "\xf0\x9f\x98\x80ZZ"}) {
        EXPECT_FALSE(base64URLDecode(QString::fromUtf8(text))) << '[' << text << ']';
    }
    EXPECT_FALSE(base64URLDecode(QString(4, QChar(0)))) << "NUL characters";
}

TEST(Base64Url, encodesWithoutPaddingAndDecodesBack)
{
    for (qsizetype length = 0; length < 70; ++length) {
        QByteArray bytes(length, '\0');
        for (qsizetype i = 0; i < length; ++i) {
            bytes[i] = static_cast<char>(i * 83 + length * 7 + 251);
        }
        const QString text = base64URLEncode(platform::bytesOf(bytes));
        EXPECT_EQ(text.size(), (length * 4 + 2) / 3);
        EXPECT_FALSE(text.contains(u'+') || text.contains(u'/') || text.contains(u'=')) << length;
        EXPECT_EQ(base64URLDecode(text), bytes) << length;
    }
    EXPECT_EQ(base64URLEncode(platform::bytesOf("\xfb\xff\xbe")), QStringLiteral("-_--"));
}

TEST(PercentDecoding, replacesEscapesAndKeepsTheRest)
{
    // Once only; whole plain characters mix with escaped ones; a byte order mark and what is no
    // character are text like any other.
    const std::vector<std::pair<const char*, const char*>> rows{{"", ""},
        {"report.txt", "report.txt"}, {"a+b c", "a+b c"}, {"%41%7a%2F", "Az/"}, {"%25", "%"},
        {"%2541", "%41"}, {"%0D%0A", "\r\n"}, {"%c3%a4%C3%A4", "ää"}, {"ä%C3%A4", "ää"},
        {"%F0%9F%98%80", "\U0001F600"}, {"%EF%BF%BF", "\uFFFF"}, {"%F4%8F%BF%BF", "\U0010FFFF"}};
    for (const auto& [encoded, text] : rows) {
        EXPECT_EQ(percentDecode(QString::fromUtf8(encoded)), std::optional(QString::fromUtf8(text)))
            << encoded;
    }
    EXPECT_EQ(percentDecode(u"%EF%BB%BFa"), std::optional(QStringLiteral("\uFEFFa")));
    EXPECT_EQ(percentDecode(u"%00"), std::optional(QString(1, QChar(0))));
}

TEST(PercentDecoding, refusesBadEscapesAndBadUtf8)
{
    // Escapes without two hexadecimal digits; then bytes that are alone, cut off, overlong, a
    // surrogate, beyond the last code point; an escaped first byte before a plain character.
    for (const char* const encoded : {"%", "a%", "%4", "%4g", "%g4", "%%41", "% 41", "%+4", "%-4",
             "%0x41", "%4\xc3\xa4", "%\xc3\xa4", "%80", "%FF", "%C3", "%C3a", "%E2%82", "%F0%9F%98",
             "%C0%80", "%C1%81", "%E0%80%80", "%F0%80%80%80", "%ED%A0%80", "%ED%BF%BF",
             "%ED%A0%BD%ED%B8%80", "%F4%90%80%80", "%F8%88%80%80%80", "%C3\xc2\xa4"}) {
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
    EXPECT_EQ(
        percentEncodeForQuery(u"Küche \U0001F600"), QStringLiteral("K%C3%BCche%20%F0%9F%98%80"));
}

TEST(PercentEncoding, keepsLettersMarksAndNumbersOfEveryScriptInFileNames)
{
    // Among them a combining accent (Mn), an enclosing mark (Me), a Roman numeral (Nl), one half
    // (No) and an Arabic digit (Nd); a letter beyond the basic plane stays, an emoji, a dash and a
    // joiner do not; a byte order mark is a character wherever it stands.
    const std::vector<std::pair<const char*, const char*>> rows{{"", ""},
        {"IMG_2024-01~2.jpeg", "IMG_2024-01~2.jpeg"}, {"a b/c%d+e", "a%20b%2Fc%25d%2Be"},
        {"!$&'()*,:;=?@[]{}|\\^`<>\"#",
            "%21%24%26%27%28%29%2A%2C%3A%3B%3D%3F%40%5B%5D%7B%7D%7C%5C%5E%60%3C%3E%22%23"},
        {"\r\n\x7f", "%0D%0A%7F"}, {"Größe 文件名", "Größe%20文件名"},
        {"e\u0301\u20dd\u2167\u00bd\u0663", "e\u0301\u20dd\u2167\u00bd\u0663"},
        {"\U00010400\U0001F600", "\U00010400%F0%9F%98%80"},
        {"a\u2014b\u200dc", "a%E2%80%94b%E2%80%8Dc"}, {"a\ufeff", "a%EF%BB%BF"},
        {"\u00a0", "%C2%A0"}};
    for (const auto& [plain, encoded] : rows) {
        const QString name = QString::fromUtf8(plain);
        EXPECT_EQ(percentEncodeFileName(name).toUtf8(), QByteArray(encoded)) << plain;
        EXPECT_EQ(percentDecode(percentEncodeFileName(name)), std::optional(name)) << plain;
    }
}
