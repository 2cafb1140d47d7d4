#include "ReceiverTest.h"

#include "support/EnvironmentVariable.h"
#include "support/TestFiles.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// The command-line phone against the receiver.

using namespace e2e;

namespace {

class Phone : public ReceiverTest {
protected:
    /// A file of the user's.
    [[nodiscard]] QString own(const QString& name, const QByteArray& content) const
    {
        support::writeFile(home_.ownFile(name), content);
        return home_.ownFile(name);
    }

    [[nodiscard]] QString wrongLink() const
    {
        return u"http://127.0.0.1:8788/?flkey="_s + QString(43, u'A');
    }

    [[nodiscard]] QJsonArray transferLog() const
    {
        return QJsonDocument::fromJson(support::contentOf(home_.transferLogFile())).array();
    }
};

} // namespace

TEST_F(Phone, uploadsFilesOfEverySize)
{
    for (const qsizetype size : {0, 1, 1048575, 1048576, 1048577, 2097153, 5'000'000}) {
        const QString name = u"%1.bin"_s.arg(size);
        const QByteArray content = support::testContent(size);
        const PhoneRun run
            = phone({u"upload"_s, home_.pairingLink(), u"--name=Pixel 8"_s, own(name, content)});
        EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
        EXPECT_TRUE(run.output.startsWith(
            name.toUtf8() + ": stored and verified, " + QByteArray::number(size) + " bytes in "))
            << run.output.constData();
        EXPECT_EQ(home_.received(u"Pixel 8/"_s + name), content) << size;
        EXPECT_TRUE(program_.log().contains("  Secure V4 received " + QByteArray::number(size)
            + " bytes to " + home_.receiveFolder().toUtf8() + "/Pixel 8/" + name.toUtf8() + '\n'));
    }
    expectNoTrace();
}

TEST_F(Phone, uploadIsInTheTransferLogWithNameAndTrueSize)
{
    const QString file = own(u"report.txt"_s, "content");
    EXPECT_EQ(phone({u"upload"_s, u"--local"_s, file, file}).exitCode, 0);
    ASSERT_TRUE(support::waitUntil([this] { return transferLog().size() == 2; }));
    const char* const names[] = {"report.txt", "report (1).txt"};
    for (int i = 0; i < 2; ++i) {
        const QJsonObject entry = transferLog()[i].toObject();
        EXPECT_EQ(entry[u"fileName"].toString(), QString::fromLatin1(names[i]));
        EXPECT_EQ(entry[u"direction"].toString(), u"Received"_s);
        EXPECT_EQ(entry[u"result"].toString(), u"Completed"_s);
        EXPECT_EQ(entry[u"peer"].toString(), u""_s);
        EXPECT_EQ(entry[u"size"].toInteger(), 7);
        EXPECT_TRUE(entry[u"date"].isDouble());
    }
}

TEST_F(Phone, keepsNamesAsTheyAre)
{
    const QStringList names{u"r\u00E9sum\u00E9 \u4E2D\u6587 \U0001F600.txt"_s, u"100%.txt"_s,
        u"a:b\\c"_s, u".hidden"_s, u"tab\tand\nline"_s, QString(251, u'n') + u".txt"_s,
        u" blanks "_s, u"archive.tar.gz"_s};
    QStringList arguments{u"upload"_s, u"--name"_s, u"Ben's: Phone/2"_s, u"--local"_s, u"--"_s};
    for (const QString& name : names) {
        arguments.append(own(name, name.toUtf8()));
    }
    const PhoneRun run = phone(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    for (QString name : names) {
        const QByteArray content = name.toUtf8();
        name.replace(u':', u'_').replace(u'\\', u'_');
        EXPECT_EQ(home_.received(u"Ben's_ Phone_2/"_s + name), content) << qPrintable(name);
    }
}

TEST_F(Phone, identifiesThePairedComputerOnly)
{
    const PhoneRun paired = phone({u"identify"_s, home_.pairingLink()});
    EXPECT_EQ(paired.exitCode, 0) << paired.errors.constData();
    EXPECT_FALSE(paired.output.trimmed().isEmpty());
    EXPECT_EQ(phone({u"identify"_s, u"--local"_s}).output, paired.output);

    const PhoneRun stranger = phone({u"identify"_s, wrongLink()});
    EXPECT_EQ(stranger.exitCode, 3);
    EXPECT_EQ(stranger.output, "");
}

TEST_F(Phone, tellsByItsExitCodeWhatWentWrong)
{
    const QString file = own(u"a.bin"_s, "content");
    struct Row {
        QStringList arguments;
        int exitCode;
        QByteArray errors;
    };
    const QString deadLink = home_.pairingLink().replace(u":8788"_s, u":1"_s);
    const Row rows[] = {
        {{u"upload"_s, u"--frobnicate"_s, file}, 1, "frobnicate"},
        {{u"upload"_s, u"http://127.0.0.1:8788/"_s, file}, 1, "not a pairing link"},
        {{u"upload"_s, deadLink, file}, 2, "Connection refused"},
        {{u"receive"_s, u"--port=8788"_s}, 2, "cannot open port 8788: Address already in use"},
        {{u"receive"_s, u"--port=8788"_s, u"--busy=1"_s}, 2, "cannot open port 8788"},
        {{u"upload"_s, wrongLink(), file}, 3, "does not hold the key"},
        {{u"upload"_s, u"--skip-identify"_s, wrongLink(), file}, 5, "Authentication failed"},
        {{u"upload"_s, u"--local"_s, home_.ownFile(u"missing"_s)}, 6, "No such file"},
        {{u"upload"_s, u"--local"_s, home_.path()}, 6, "Could not read file size"},
    };
    for (const Row& row : rows) {
        const PhoneRun run = phone(row.arguments);
        EXPECT_EQ(run.exitCode, row.exitCode) << qPrintable(row.arguments.join(u' '));
        EXPECT_TRUE(run.errors.contains(row.errors)) << run.errors.constData();
        // Receiving shows its link at once.
        EXPECT_TRUE(run.output.isEmpty() || row.arguments[0] == u"receive"_s);
    }
    expectNoTrace();
    EXPECT_EQ(home_.receivedFiles(), QStringList());
}

TEST_F(Phone, outlivesARefusalInTheMiddle)
{
    // Slow hashing, which then still reads when the send has ended, and memory that is overwritten
    // when it is freed.
    const support::EnvironmentVariable hashing("OPENSSL_ia32cap", "~0x0:~0x20000000");
    const support::EnvironmentVariable overwriting("MALLOC_PERTURB_", "165");
    const support::EnvironmentVariable notKept("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0");
    const QString file = own(u"big.bin"_s, support::testContent(20'000'000));
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(phone({u"upload"_s, u"--skip-identify"_s, wrongLink(), file}).exitCode, 5);
    }
}

TEST_F(Phone, makesNoKeyWhereThereIsNone)
{
    ASSERT_TRUE(QFile::remove(home_.keyFile()));
    const PhoneRun run = phone({u"identify"_s, u"--local"_s});
    EXPECT_EQ(run.exitCode, 6);
    EXPECT_TRUE(run.errors.contains("holds no receiver key")) << run.errors.constData();
    EXPECT_FALSE(QFileInfo::exists(home_.keyFile()));
}
