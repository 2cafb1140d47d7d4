#include "platform/Crypto.h"

#include <gtest/gtest.h>

#include <vector>

using namespace platform;

namespace {

QByteArray fromHex(const char* hex)
{
    return QByteArray::fromHex(hex);
}

SecretKey keyFromHex(const char* hex)
{
    return *SecretKey::fromBytes(bytesOf(fromHex(hex)));
}

struct GcmVector {
    const char* key;
    const char* nonce;
    const char* associatedData;
    const char* plaintext;
    const char* ciphertext;
    const char* tag;
};

// McGrew and Viega, "The Galois/Counter Mode of Operation (GCM)", test cases 13, 14 and 16.
constexpr GcmVector gcmVectors[] = {
    {"0000000000000000000000000000000000000000000000000000000000000000", "000000000000000000000000",
        "", "", "", "530f8afbc74536b9a963b4f1c4cb738b"},
    {"0000000000000000000000000000000000000000000000000000000000000000", "000000000000000000000000",
        "", "00000000000000000000000000000000", "cea7403d4d606b6e074ec5d3baf39d18",
        "d0d1c8a799996bf0265b98b5d48ab919"},
    {"feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308", "cafebabefacedbaddecaf888",
        "feedfacedeadbeeffeedfacedeadbeefabaddad2",
        "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
        "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b39",
        "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
        "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662",
        "76fc6ece0f4e1768cddf8853bb2d551b"},
};

GcmNonce nonceFromHex(const char* hex)
{
    GcmNonce nonce{};
    copyBytes(bytesOf(fromHex(hex)), nonce);
    return nonce;
}

} // namespace

TEST(Aes256Gcm, sealsAndOpensThePublishedVectors)
{
    for (const GcmVector& vector : gcmVectors) {
        Aes256Gcm cipher(keyFromHex(vector.key));
        const QByteArray plaintext = fromHex(vector.plaintext);
        const QByteArray associatedData = fromHex(vector.associatedData);
        const GcmNonce nonce = nonceFromHex(vector.nonce);
        std::vector<std::byte> sealed(static_cast<std::size_t>(plaintext.size()) + gcmTagBytes);

        cipher.seal(nonce, bytesOf(associatedData), bytesOf(plaintext), sealed);
        EXPECT_EQ(toByteArray(sealed), fromHex(vector.ciphertext) + fromHex(vector.tag));

        std::vector<std::byte> opened(static_cast<std::size_t>(plaintext.size()));
        EXPECT_EQ(cipher.open(nonce, bytesOf(associatedData), sealed, opened), opened.size());
        EXPECT_EQ(toByteArray(opened), plaintext);
    }
}

TEST(Aes256Gcm, opensNothingThatWasChanged)
{
    const GcmVector& vector = gcmVectors[2];
    Aes256Gcm cipher(keyFromHex(vector.key));
    const GcmNonce nonce = nonceFromHex(vector.nonce);
    const QByteArray associatedData = fromHex(vector.associatedData);
    const QByteArray sealed = fromHex(vector.ciphertext) + fromHex(vector.tag);
    std::vector<std::byte> out(static_cast<std::size_t>(sealed.size()));
    const auto opens = [&](const GcmNonce& n, const QByteArray& data, const QByteArray& bytes) {
        return cipher.open(n, bytesOf(data), bytesOf(bytes), out).has_value();
    };

    for (qsizetype i = 0; i < sealed.size(); ++i) {
        QByteArray changed = sealed;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        EXPECT_FALSE(opens(nonce, associatedData, changed)) << "byte " << i;
    }
    GcmNonce otherNonce = nonce;
    otherNonce[11] ^= std::byte{1};
    EXPECT_FALSE(opens(otherNonce, associatedData, sealed));
    EXPECT_FALSE(opens(nonce, associatedData + 'x', sealed));
    EXPECT_FALSE(opens(nonce, associatedData, sealed.left(15)));
    // A refused message must not spoil the cipher for the next one.
    EXPECT_TRUE(opens(nonce, associatedData, sealed));
}

TEST(Sha256, givesThePublishedDigestsHoweverTheInputIsCut)
{
    // FIPS 180-4 example values.
    const QByteArray message = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    const QByteArray expected
        = fromHex("248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    Sha256 sha256;
    for (qsizetype cut = 0; cut <= message.size(); ++cut) {
        sha256.update(bytesOf(message.left(cut)));
        sha256.update(bytesOf(message.mid(cut)));
        EXPECT_EQ(toByteArray(sha256.finish()), expected) << "cut at " << cut;
    }
    EXPECT_EQ(toByteArray(sha256.finish()),
        fromHex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
}

TEST(SecretKey, takesExactly32Bytes)
{
    for (const qsizetype length : {0, 16, 31, 33, 64}) {
        EXPECT_FALSE(SecretKey::fromBytes(bytesOf(QByteArray(length, 'k')))) << length;
    }
    EXPECT_TRUE(SecretKey::fromBytes(bytesOf(QByteArray(32, 'k'))));
}

TEST(SecretKey, leavesNothingBehindWhereItWasMovedFrom)
{
    SecretKey key = *SecretKey::fromBytes(bytesOf(QByteArray(32, 'k')));
    const SecretKey moved = std::move(key);
    EXPECT_EQ(toByteArray(moved.bytes()), QByteArray(32, 'k'));
    // NOLINTNEXTLINE(bugprone-use-after-move): what stays there is the point
    EXPECT_EQ(toByteArray(key.bytes()), QByteArray(32, '\0'));
}
