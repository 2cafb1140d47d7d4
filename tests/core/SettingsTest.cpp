#include "core/Settings.h"

#include "platform/Files.h"
#include "support/BadDisk.h"
#include "support/TestFiles.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include <sys/stat.h>

namespace ferrylane {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SettingsTest : public ::testing::Test {
protected:
    [[nodiscard]] QString path() const { return folder_.filePath(u"settings.ini"_s); }

private:
    QTemporaryDir folder_;
};

TEST_F(SettingsTest, TextsComeBackUnchangedAlsoByWayOfQSettings)
{
    const QStringList texts{u""_s, u" "_s, u"plain"_s, u"a, b, c"_s, u"\"quoted\""_s,
        u"back\\slash\\n"_s, u"@Invalid()"_s, u"@ByteArray(x)"_s, u"semi;colon"_s, u"a=b"_s,
        u"%41"_s, u"Größe ☂ 😀"_s, u"true"_s, u"007"_s, QString(5000, u'x'),
        u"two\nlines\r\t\x1F"_s + u'1'};
    {
        QSettings settings(path(), QSettings::IniFormat);
        for (const QString& text : texts.first(texts.size() - 1)) {
            settings.setValue(u"theirs%1"_s.arg(texts.indexOf(text)), text);
        }
    }
    {
        Settings store(path());
        for (const QString& text : texts) {
            store.set(u"ours%1"_s.arg(texts.indexOf(text)), text);
        }
    }
    const QSettings settings(path(), QSettings::IniFormat);
    const Settings again(path());
    for (qsizetype i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(again.string(u"ours%1"_s.arg(i)), texts[i]);
        EXPECT_EQ(again.string(u"theirs%1"_s.arg(i)).value_or(texts.last()), texts[i]);
        EXPECT_EQ(settings.value(u"ours%1"_s.arg(i)).toString(), texts[i]);
    }
}

TEST_F(SettingsTest, ValuesReadTheSameBeforeAndAfterARestart)
{
    struct Case {
        QVariant value;
        QString text;
        bool orTrue;
        bool orFalse;
        qint64 integer;
    };
    const std::vector<Case> cases{
        {true, u"true"_s, true, true, 0},
        {false, u"false"_s, false, false, 0},
        {0, u"0"_s, false, false, 0},
        {-7, u"-7"_s, true, false, -7},
        {Q_INT64_C(9007199254740993), u"9007199254740993"_s, true, false, 9007199254740993},
        {u"YES"_s, u"YES"_s, true, true, 0},
        {u"No"_s, u"No"_s, false, false, 0},
        {u"maybe"_s, u"maybe"_s, true, false, 0},
        {u"99999999999999999999"_s, u"99999999999999999999"_s, true, false, 0},
    };
    for (const Case& c : cases) {
        const auto check = [&c](const Settings& store) {
            EXPECT_EQ(store.string(u"key"_s), c.text);
            EXPECT_EQ(store.boolean(u"key"_s, true), c.orTrue) << c.text.toStdString();
            EXPECT_EQ(store.boolean(u"key"_s, false), c.orFalse) << c.text.toStdString();
            EXPECT_EQ(store.integer(u"key"_s), c.integer) << c.text.toStdString();
        };
        {
            Settings store(path());
            store.set(u"key"_s, c.value);
            check(store);
        }
        check(Settings(path()));
    }
}

TEST_F(SettingsTest, WritesEachChangeForItsOwnerAlone)
{
    const QTemporaryDir parent;
    const QString folder = parent.filePath(u"a"_s);
    const QString file = folder + u"/settings.ini"_s;
    const mode_t umaskBefore = ::umask(0);
    {
        Settings store(file);
        store.set(u"key"_s, u"value"_s);
        EXPECT_FALSE(store.flush());
        EXPECT_EQ(support::contentOf(file), "[General]\nkey=value\n");
        store.set(u"flag"_s, true);
        store.remove(u"key"_s);
        EXPECT_EQ(store.keys(), QStringList{u"flag"_s});
    }
    ::umask(umaskBefore);
    EXPECT_EQ(support::contentOf(file), "[General]\nflag=true\n");
    EXPECT_EQ(support::modeOf(file), 0600U);
    EXPECT_EQ(support::modeOf(folder), 0700U);
    EXPECT_EQ(support::everythingIn(folder), QStringList{u"settings.ini"_s});

    ASSERT_FALSE(platform::setMode(file, 0644));
    ASSERT_FALSE(platform::setMode(folder, 0755));
    const Settings repairing(file);
    EXPECT_EQ(support::modeOf(file), 0600U);
    EXPECT_EQ(support::modeOf(folder), 0700U);
}

TEST_F(SettingsTest, NobodyWaitsForASlowDisk)
{
    constexpr auto syncTime = 500ms;
    const auto start = std::chrono::steady_clock::now();
    const auto elapsed = [&] { return std::chrono::steady_clock::now() - start; };
    {
        const support::BadDisk disk({.syncTime = syncTime});
        Settings store(path());
        for (int i = 0; i < 100; ++i) {
            store.set(u"key"_s, i);
            EXPECT_EQ(store.integer(u"key"_s), i);
            std::this_thread::sleep_for(1ms);
        }
        EXPECT_LT(elapsed(), syncTime);
    }
    EXPECT_GT(elapsed(), syncTime);
    EXPECT_LT(elapsed(), 20 * syncTime) << "not each change by itself";
    EXPECT_EQ(Settings(path()).integer(u"key"_s), 99);
}

TEST_F(SettingsTest, TakesWhatPeopleWriteAndKeepsOtherValuesOfTheFile)
{
    struct Case {
        QByteArray written;
        QString value;
    };
    const std::vector<Case> cases{
        {"/home/a, b=c;d", u"/home/a, b=c;d"_s},
        {" /home/new\\table\\x41 ", u"/home/new\\table\\x41"_s},
        {"a\\\\b \\\"c\\\"", u"a\\b \"c\""_s},
        {"\"a, \\\\b\\t\\x41\"", u"a, \\b\tA"_s},
        {"@@Invalid()", u"@Invalid()"_s},
        {"", u""_s},
    };
    for (const Case& c : cases) {
        support::writeFile(
            path(), "[Other]\nkey=1\n[general]\nkey=0\nkey=" + c.written + "\r\nkept=" + c.written);
        {
            Settings store(path());
            EXPECT_EQ(store.string(u"key"_s), c.value) << c.written.constData();
            EXPECT_EQ(store.keys(), QStringList({u"kept"_s, u"key"_s}));
            store.set(u"key"_s, u"new"_s);
            EXPECT_FALSE(store.flush());
            // What another program changes is not changed back with the next value.
            Settings(path()).set(u"key"_s, u"newer"_s);
            store.set(u"more"_s, 1);
        }
        const Settings again(path());
        EXPECT_EQ(again.string(u"kept"_s), c.value);
        EXPECT_EQ(again.string(u"key"_s), u"newer"_s);
        EXPECT_EQ(again.string(u"more"_s), u"1"_s);
        EXPECT_TRUE(support::contentOf(path()).contains("[Other]\nkey=1\n"));
    }
}

TEST_F(SettingsTest, KeepsValuesForThisRunWhenTheFileCannotBeWritten)
{
    ASSERT_FALSE(platform::createFolders(path() + u"/in the way"_s));
    Settings store(path());
    store.set(u"key"_s, u"value"_s);
    store.set(u"other"_s, 3);
    EXPECT_EQ(store.string(u"key"_s), u"value"_s);
    EXPECT_EQ(store.integer(u"other"_s), 3);
    store.remove(u"key"_s);
    EXPECT_FALSE(store.string(u"key"_s));
    EXPECT_TRUE(store.flush());
}

TEST_F(SettingsTest, KeepsWhatCanBeReadOfADamagedFile)
{
    for (const QByteArray& damage : {QByteArray("no equals sign"), QByteArray("[unclosed"),
             QByteArray("\0\x01\xff\xfe garbage", 12), QByteArray("=no key"),
             QByteArray("cut=\"off")}) {
        support::writeFile(path(), "\xEF\xBB\xBF[General]\nname=Anna\n" + damage);
        Settings(path()).set(u"new"_s, u"value"_s);
        const Settings again(path());
        EXPECT_EQ(again.string(u"name"_s), u"Anna"_s) << damage.constData();
        EXPECT_EQ(again.string(u"new"_s), u"value"_s) << damage.constData();
    }
}

} // namespace
} // namespace ferrylane
