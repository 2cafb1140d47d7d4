#include "receiver/V4Stream.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

using namespace ferrylane;

TEST(V4Stream, bindsEveryRecordToItsTransfer)
{
    V4Transfer transfer = support::testTransfer(1048577);
    transfer.id = QStringLiteral("0123456789abcdef");
    transfer.fileName = QStringLiteral("n\u00E4me 1.txt");
    EXPECT_EQ(dataRecordAssociatedData(transfer, 0, 1048576),
        "Ferrylane-v4\n0123456789abcdef\nn\xC3\xA4me 1.txt\n1048577\n0\n1048576");
    EXPECT_EQ(dataRecordAssociatedData(transfer, 4294967294, 1),
        "Ferrylane-v4\n0123456789abcdef\nn\xC3\xA4me 1.txt\n1048577\n4294967294\n1");
    transfer.fileSize = -1;
    EXPECT_EQ(finalRecordAssociatedData(transfer, 2, 5000000000),
        "Ferrylane-v4-final\n0123456789abcdef\nn\xC3\xA4me 1.txt\n-1\n2\n5000000000");
}

TEST(V4Stream, countsInTheNonceAsBigEndian)
{
    const NoncePrefix prefix = support::testTransfer(0).noncePrefix;
    EXPECT_EQ(platform::toByteArray(makeNonce(prefix, 0)).toHex(), "a0a1a2a3a4a5a6a700000000");
    EXPECT_EQ(
        platform::toByteArray(makeNonce(prefix, 0x01020304)).toHex(), "a0a1a2a3a4a5a6a701020304");
}

TEST(V4Stream, sealsRecordsInTheDocumentedLayout)
{
    const auto records = support::sealedRecords(
        support::testKey(), support::testTransfer(3), QByteArray("abc"), 2);
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].left(8).toHex(), "0000000200000000");
    EXPECT_EQ(records[0].size(), 26);
    EXPECT_EQ(records[1].left(8).toHex(), "0000000100000001");
    EXPECT_EQ(records[1].size(), 25);
    EXPECT_EQ(records[2].left(8).toHex(), "00000020ffffffff");
    EXPECT_EQ(records[2].size(), 56);

    // Opened by hand: nonce, associated data and tag stand where a phone expects them.
    platform::Aes256Gcm cipher(support::testKey());
    std::array<std::byte, 2> plaintext{};
    const QByteArray data
        = "Ferrylane-v4\n6F9619FF-8B86-D011-B42D-00CF4FC964FF\nphoto.jpg\n3\n0\n2";
    EXPECT_EQ(cipher.open(makeNonce(support::testTransfer(3).noncePrefix, 0),
                  platform::bytesOf(data), platform::bytesOf(records[0].mid(8)), plaintext),
        2U);
    EXPECT_EQ(platform::toByteArray(plaintext), "ab");
}

TEST(V4Stream, writesTheHeadAsPhonesExpectIt)
{
    V4Transfer transfer = support::testTransfer(42);
    transfer.fileName = QStringLiteral("50%1 n\u00E4me/~.txt");
    EXPECT_EQ(uploadRequestHead(
                  transfer, QStringLiteral("[fe80::1]"), 8787, QStringLiteral("Ben's %2 & \u00E4")),
        "POST /secure-upload-v4 HTTP/1.1\r\n"
        "Host: [fe80::1]:8787\r\n"
        "Connection: close\r\n"
        "Transfer-Encoding: chunked\r\n"
        "Content-Type: application/octet-stream\r\n"
        "X-Filename: 50%251%20n\xC3\xA4me%2F~.txt\r\n"
        "X-Ferrylane-Protocol: 4\r\n"
        "X-Ferrylane-Transfer-ID: 6F9619FF-8B86-D011-B42D-00CF4FC964FF\r\n"
        "X-Ferrylane-Nonce-Prefix: oKGio6Slpqc\r\n"
        "X-Ferrylane-File-Size: 42\r\n"
        "X-Ferrylane-Sender-Name: Ben's%20%252%20&%20%C3%A4\r\n"
        "\r\n");
}

TEST(V4Stream, framesChunks)
{
    EXPECT_EQ(support::chunk(QByteArray(26, 'x')), "1a\r\n" + QByteArray(26, 'x') + "\r\n");
    EXPECT_EQ(support::chunkedBody({}), "0\r\n\r\n");
}
