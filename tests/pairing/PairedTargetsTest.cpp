#include "pairing/PairedTargets.h"

#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "platform/Files.h"
#include "support/BadDisk.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"
#include "support/TestFiles.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <thread>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace ferrylane;
using namespace std::chrono_literals;

namespace {

/// Keys that differ in their number.
QString key(int number)
{
    const QByteArray bytes(32, static_cast<char>(number));
    return QString::fromLatin1(bytes.toBase64());
}

FerrylanePairedTarget phone(const QString& name, int number)
{
    return {name, u"http://10.0.0.%1:8787"_s.arg(number), key(number)};
}

QByteArray json(const FerrylanePairedTarget& target)
{
    return R"({"name":")" + target.name.toUtf8() + R"(","baseURL":")" + target.baseURL.toUtf8()
        + R"(","keyB64":")" + target.keyB64.toUtf8() + R"("})";
}

class PairedTargets : public testing::Test {
protected:
    static void write(const QString& path, const QByteArray& content, mode_t mode = 0644)
    {
        ASSERT_FALSE(platform::createFolders(applicationSupportFolder()));
        ASSERT_FALSE(platform::writeFileAtomically(path, platform::bytesOf(content), mode));
    }

    static QByteArray listFile()
    {
        return platform::readFile(ferrylanePairedTargetsURL(), 100000).value_or("none");
    }

    static QString selected()
    {
        return userSettings().string(ferrylaneSelectedOutboundKeyPref).value_or(u"none"_s);
    }

    /// "NAME KEYNUMBER" of each in the list.
    static QString names()
    {
        QStringList result;
        for (const auto& target : loadFerrylanePairedTargets()) {
            const QByteArray bytes = QByteArray::fromBase64(target.keyB64.toLatin1());
            result.append(target.name + u' ' + QString::number(int{bytes[0]}));
        }
        return result.join(u',');
    }

    /// Nothing can be written or read below a file.
    void makeFolderUnusable() const
    {
        QFile::rename(home_.data(), home_.below(u"away"_s));
        support::writeFile(home_.data());
    }

    support::PrivateUserFolders home_;
};

} // namespace

TEST_F(PairedTargets, areKeptInOrderForTheirOwnerAlone)
{
    EXPECT_EQ(names(), u""_s);
    EXPECT_FALSE(loadFerrylanePairedTarget());

    const mode_t umaskBefore = ::umask(0);
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"a/\"b"_s, 1)));
    ::umask(umaskBefore);
    EXPECT_EQ(support::modeOf(applicationSupportFolder()), 0700U);
    EXPECT_EQ(support::modeOf(ferrylanePairedTargetsURL()), 0600U);
    EXPECT_TRUE(listFile().contains(R"("http:\/\/10.0.0.1:8787")")) << listFile().constData();
    EXPECT_EQ(loadFerrylanePairedTargets(), QList{phone(u"a/\"b"_s, 1)});
    EXPECT_EQ(selected(), key(1));

    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"K\u00fcche"_s, 2)));
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"c"_s, 3)));
    EXPECT_EQ(names(), u"a/\"b 1,Küche 2,c 3"_s);
    // The name again, in another case and with another key; the key again with another name; both.
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"K\u00dcCHE"_s, 4)));
    EXPECT_EQ(names(), u"a/\"b 1,c 3,KÜCHE 4"_s);
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"d"_s, 1)));
    EXPECT_EQ(names(), u"c 3,KÜCHE 4,d 1"_s);
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"C"_s, 4)));
    EXPECT_EQ(names(), u"d 1,C 4"_s);
    EXPECT_EQ(selected(), key(4));
    EXPECT_EQ(home_.log(), u""_s);
}

TEST_F(PairedTargets, readsWhatIsUsableOfTheList)
{
    auto shortKey = phone(u"short"_s, 2);
    shortKey.keyB64 = key(2).first(40);
    write(ferrylanePairedTargetsURL(),
        '[' + json(phone(u"FL  Office "_s, 1)) + ',' + json(shortKey) + ','
            + json(phone(u" x "_s, 3)) + ',' + json(phone(u"fl "_s, 4)) + ','
            + json(phone(QString(), 5)) + ']');
    EXPECT_EQ(names(), u"Office 1, x  3,Android 4,Android 5"_s);

    const QByteArray good = json(phone(u"a"_s, 1));
    for (const QByteArray& damaged :
        {QByteArray(), QByteArray("{}"), good, '[' + good + ",{}]", '[' + good + ",7]",
            '[' + good + R"(,{"name":"b","baseURL":"http://b","keyB64":1}])", '[' + good}) {
        write(ferrylanePairedTargetsURL(), damaged);
        EXPECT_EQ(names(), u""_s) << damaged.constData();
    }
}

TEST_F(PairedTargets, selectsOneOfTheList)
{
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"a"_s, 1)));
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"b"_s, 2)));
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"c"_s, 3)));
    selectFerrylanePairedTarget(phone(u"b"_s, 2));
    EXPECT_EQ(loadFerrylanePairedTarget(), phone(u"b"_s, 2));

    forgetFerrylanePairedTarget(phone(u"b"_s, 3)); // by its key, whatever its name
    EXPECT_EQ(names(), u"a 1,b 2"_s);
    EXPECT_EQ(selected(), key(2)) << "another than the chosen one was forgotten";
    forgetFerrylanePairedTarget();
    EXPECT_EQ(names(), u"a 1"_s);
    EXPECT_EQ(selected(), key(1));

    selectFerrylanePairedTarget(phone(u"gone"_s, 9));
    EXPECT_EQ(loadFerrylanePairedTarget(), phone(u"a"_s, 1));
    EXPECT_EQ(selected(), key(1));
    forgetFerrylanePairedTarget(phone(u"a"_s, 1));
    EXPECT_EQ(listFile(), QByteArray("[]"));
    EXPECT_EQ(selected(), u"none"_s);
}

TEST_F(PairedTargets, refreshesTheAddressOfTheFirstOfThatName)
{
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"Office"_s, 1)));
    const QByteArray before = listFile();
    struct stat first {};
    ASSERT_EQ(::stat(QFile::encodeName(ferrylanePairedTargetsURL()).constData(), &first), 0);
    refreshFerrylanePairedTargetAddress(u"office"_s, u"http://10.0.0.1:8787"_s);
    refreshFerrylanePairedTargetAddress(u"other"_s, u"http://10.0.0.9:8787"_s);
    struct stat second {};
    ASSERT_EQ(::stat(QFile::encodeName(ferrylanePairedTargetsURL()).constData(), &second), 0);
    EXPECT_EQ(first.st_ino, second.st_ino) << "nothing was written";
    EXPECT_EQ(listFile(), before);
    EXPECT_EQ(home_.log(), u""_s);

    refreshFerrylanePairedTargetAddress(u"OFFICE"_s, u"http://10.0.0.9:1"_s);
    EXPECT_EQ(loadFerrylanePairedTargets().value(0),
        (FerrylanePairedTarget{u"Office"_s, u"http://10.0.0.9:1"_s, key(1)}));
    EXPECT_TRUE(home_.log().endsWith(u"Z  Updated paired address for Office: http://10.0.0.9:1\n"))
        << qPrintable(home_.log());
}

TEST_F(PairedTargets, keepsADamagedListAsideUntilAReset)
{
    QStringList lists;
    for (const char* const damaged : {"[{1", "[{2"}) {
        write(ferrylanePairedTargetsURL(), damaged);
        ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"a"_s, 1)));
        EXPECT_EQ(names(), u"a 1"_s);
    }
    for (const QString& name : support::everythingIn(applicationSupportFolder())) {
        const QString path = applicationSupportFolder() + u'/' + name;
        if (name.contains(u".json.damaged-20"))
            lists << QString::fromUtf8(support::contentOf(path));
        EXPECT_EQ(support::modeOf(path), 0600U);
    }
    lists.sort();
    EXPECT_EQ(lists, QStringList({u"[{1"_s, u"[{2"_s})) << "none in another's place";
    EXPECT_EQ(home_.log().count(u" is damaged; it is kept as "), 2);

    removeFerrylanePairedTargets();
    EXPECT_EQ(support::everythingIn(applicationSupportFolder()), QStringList());
}

TEST_F(PairedTargets, losesNoChangeOfTwoThreadsOnASlowDisk)
{
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"a"_s, 1)));
    const support::BadDisk disk({.syncTime = 100ms});
    std::thread discovery([] {
        for (const QString& url : {u"http://1"_s, u"http://2"_s, u"http://3"_s}) {
            refreshFerrylanePairedTargetAddress(u"a"_s, url);
        }
    });
    for (int number = 2; number <= 4; ++number) {
        EXPECT_TRUE(saveFerrylanePairedTarget(phone(QString::number(number), number)));
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(names(), u"a 1,2 2,3 3,4 4"_s);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 100ms) << "who reads waits for nobody";
    discovery.join();
    EXPECT_EQ(names(), u"a 1,2 2,3 3,4 4"_s);
    EXPECT_EQ(loadFerrylanePairedTargets().first().baseURL, u"http://3"_s);
}

TEST_F(PairedTargets, takesOverTheSinglePhoneOfEarlierVersions)
{
    auto noKey = phone(u"a"_s, 1);
    noKey.keyB64 = u"AAAA"_s;
    for (const QByteArray& useless : {QByteArray("[]"), json(noKey), QByteArray("{")}) {
        write(ferrylanePairedTargetURL(), useless);
        EXPECT_EQ(names(), u""_s);
        EXPECT_TRUE(QFileInfo::exists(ferrylanePairedTargetURL()));
        EXPECT_FALSE(QFileInfo::exists(ferrylanePairedTargetsURL()));
    }

    write(ferrylanePairedTargetURL(), json(phone(u"fl  a "_s, 1)).replace("/", "\\/"));
    EXPECT_EQ(loadFerrylanePairedTargets(), QList{phone(u"fl  a "_s, 1)});
    EXPECT_FALSE(QFileInfo::exists(ferrylanePairedTargetURL()));
    EXPECT_EQ(selected(), key(1));
    EXPECT_EQ(names(), u"a 1"_s) << "normalised from the next reading on";
}

TEST_F(PairedTargets, takesOverAlsoWhereNothingCanBeStored)
{
    write(ferrylanePairedTargetURL(), json(phone(u"a"_s, 1)));
    ASSERT_FALSE(platform::createFolders(ferrylanePairedTargetsURL() + u"/inner"_s));
    EXPECT_EQ(names(), u"a 1"_s);
    EXPECT_TRUE(QFileInfo::exists(ferrylanePairedTargetURL()));
    EXPECT_EQ(selected(), u"none"_s);
    EXPECT_TRUE(home_.log().endsWith(u"Z  Could not save paired targets: Is a directory\n"))
        << qPrintable(home_.log());
}

TEST_F(PairedTargets, keepTheChoiceWhenTheListCannotBeSaved)
{
    ASSERT_TRUE(saveFerrylanePairedTarget(phone(u"a"_s, 1)));
    makeFolderUnusable();
    EXPECT_FALSE(saveFerrylanePairedTarget(phone(u"b"_s, 2)));
    EXPECT_EQ(selected(), key(1));
    EXPECT_TRUE(home_.log().endsWith(u"Z  Could not save paired targets: Not a directory\n"))
        << qPrintable(home_.log());

    forgetFerrylanePairedTarget(phone(u"a"_s, 1));
    EXPECT_EQ(selected(), u"none"_s) << "forgotten all the same";
}
