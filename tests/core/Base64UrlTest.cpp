#include "core/Base64Url.h"

#include <gtest/gtest.h>

using namespace ferrylane;

TEST(Base64Url, decodesWithAndWithoutPaddingInBothAlphabets)
{
    struct Row {
        const char* text;
        QByteArray bytes;
    };
    const QByteArray allOnes("\xfb\xff\xbf", 3);
    for (const Row& row : {
             Row{"", ""},
             Row{"Zg==", "f"},
             Row{"Zg=", "f"},
             Row{"Zg", "f"},
             Row{"Zm8=", "fo"},
             Row{"Zm8", "fo"},
             Row{"Zm9v", "foo"},
             Row{"Zm9vYmFy", "foobar"},
             Row{"-_-_", allOnes},
             Row{"+/+/", allOnes},
             Row{"-/+_", allOnes},
             Row{"AAAA", QByteArray(3, '\0')},
             // The last character's lower bits belong to no byte.
             Row{"Zh", "f"},
             Row{"Zm9=", "fo"},
         }) {
        const auto decoded = base64URLDecode(QString::fromLatin1(row.text));
        ASSERT_TRUE(decoded) << row.text;
        EXPECT_EQ(*decoded, row.bytes) << row.text;
        EXPECT_EQ(decodeFerrylaneBase64URL(QString::fromLatin1(row.text)), decoded) << row.text;
    }
}

TEST(Base64Url, refusesEverythingElse)
{
    for (const char* const text : {
             // Lengths that no bytes have.
             "A",
             "AAAAA",
             "Zm9vY",
             // Padding that is too much, too early or alone.
             "=",
             "==",
             "====",
             "A===",
             "Zg===",
             "Zm9v=",
             "Zm9v====",
             "Zg==Zg==",
             "Z=g=",
             "=Zg=",
             "Zg=A",
             // Characters that are not in the alphabet.
             "Zm9 v",
             " Zm9v",
             "Zm9v ",
             "Zm9v\n",
             "Zm9v\r\n",
             "Zm\t9",
             "Zm9v!",
             "Zm9.",
             "Z%3D",
             "Zm9\xc3\xa9",
             "\xef\xbc\xba\xef\xbc\xad\xef\xbc\x99\xef\xbc\xb6",
             "\xf0\x9f\x98\x80"
             "AA",
         }) {
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
    const QByteArray key(32, '\xfb');
    EXPECT_EQ(base64URLEncode(platform::bytesOf(key)).size(), 43);
    EXPECT_EQ(base64URLEncode(platform::bytesOf("\xfb\xff\xbe")), QStringLiteral("-_--"));
}
