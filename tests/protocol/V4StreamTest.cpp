#include "protocol/StreamWriter.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

using namespace ferrylane;

// The test vectors hold whole streams; these numbers are too large for them.

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

TEST(V4Stream, neverSealsWhatIsNoRecord)
{
    StreamWriter writer(support::testTransfer(0), support::testKey());
    platform::ByteBuffer out;
    for (const std::size_t length : {std::size_t{0}, maximumRecordPlaintext + 1}) {
        EXPECT_THROW(writer.write(std::vector<std::byte>(length), out), std::length_error);
    }
    EXPECT_TRUE(out.empty());
}

TEST(V4Stream, countsInTheNonceAsBigEndian)
{
    const NoncePrefix prefix = support::testTransfer(0).noncePrefix;
    EXPECT_EQ(platform::toByteArray(makeNonce(prefix, 0)).toHex(), "a0a1a2a3a4a5a6a700000000");
    EXPECT_EQ(
        platform::toByteArray(makeNonce(prefix, 0x01020304)).toHex(), "a0a1a2a3a4a5a6a701020304");
}
