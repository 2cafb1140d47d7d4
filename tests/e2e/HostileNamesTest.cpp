#include "ReceiverTest.h"

// Names from the network lead nowhere but into the receive folder.

using namespace e2e;

namespace {

class HostileNames : public ReceiverTest {
protected:
    [[nodiscard]] QByteArray uploadOf(const QString& name, const QString& sender) const
    {
        const auto transfer = transferOf(name, 7);
        return head(transfer, sender)
            + support::chunkedBody(support::sealedRecords(home_.key(), transfer, "content"));
    }
};

} // namespace

TEST_F(HostileNames, areMadeHarmless)
{
    struct Row {
        QString name;
        QString sender;
        QString path;
    };
    const QString longSender(5000, u's');
    const Row rows[] = {
        {u"../../../evil"_s, u"Pixel"_s, u"Pixel/.._.._.._evil"_s},
        {u"..\\evil"_s, u"Pixel"_s, u"Pixel/.._evil"_s},
        {u"nul\0l"_s, u"Pixel"_s, u"Pixel/nul_l"_s},
        {u".."_s, u"Pixel"_s, u"Pixel/.. (1)"_s},
        {u""_s, u"Pixel"_s, u"Pixel/ (1)"_s},
        {u"a\r\nX-Ferrylane-Sender-Name: b"_s, u"Pixel"_s,
            u"Pixel/a\r\nX-Ferrylane-Sender-Name_ b"_s},
        {u"evil"_s, u".."_s, u"Unknown device/evil"_s},
        {u"evil"_s, u"../.."_s, u"_/evil"_s},
        {u"worse"_s, u""_s, u"Unknown device/worse"_s},
        {u"evil"_s, u"nul\0l"_s, u"nul_l/evil"_s},
        {u"evil"_s, longSender, longSender.first(80) + u"/evil"_s},
    };
    QStringList files = home_.allFiles();
    for (const Row& row : rows) {
        EXPECT_EQ(support::answerTo(uploadOf(row.name, row.sender)), stored)
            << qPrintable(row.path);
        EXPECT_EQ(home_.received(row.path), "content") << qPrintable(row.path);
        files.append(u"Downloads/Ferrylane/"_s + row.path);
    }
    files.append(u".local/share/Ferrylane/transfer-log-v1.json"_s);
    files.sort();
    // The transfer log is written after the answer, by way of a temporary file.
    QStringList found;
    EXPECT_TRUE(support::waitUntil([&] { return (found = home_.allFiles()) == files; }));
    EXPECT_EQ(found, files) << "and nothing anywhere else";
    EXPECT_EQ(program_.log().count("  Secure V4 received 7 bytes to "), std::ssize(rows))
        << "one line each, whatever is in the name";
    for (const QByteArray& line : program_.log().trimmed().split('\n')) {
        EXPECT_TRUE(line.startsWith("20")) << "not begun with its time: " << line.constData();
    }
}

TEST_F(HostileNames, cannotUseALinkToLeaveTheReceiveFolder)
{
    // Somebody has put a link where the file's name is: it is neither followed nor replaced.
    ASSERT_TRUE(QDir().mkpath(home_.receiveFolder() + u"/Pixel"_s));
    const QString link = home_.receiveFolder() + u"/Pixel/a.bin"_s;
    ASSERT_TRUE(QFile::link(home_.ownFile(u"target"_s), link));
    EXPECT_EQ(support::answerTo(uploadOf(u"a.bin"_s, u"Pixel"_s)), stored);
    EXPECT_FALSE(QFileInfo::exists(home_.ownFile(u"target"_s)));
    EXPECT_EQ(home_.received(u"Pixel/a (1).bin"_s), "content");
}
