#include "platform/DefaultsStore.h"

#include "platform/Files.h"
#include "support/TestFiles.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace platform {
namespace {

using namespace Qt::StringLiterals;

class DefaultsStoreTest : public ::testing::Test {
protected:
    [[nodiscard]] QString path() const { return folder_.filePath(u"settings.ini"_s); }

private:
    QTemporaryDir folder_;
};

TEST_F(DefaultsStoreTest, TextsComeBackUnchanged)
{
    const QStringList texts{u""_s, u" "_s, u"plain"_s, u"a, b, c"_s, u"\"quoted\""_s,
        u"back\\slash"_s, u"@Invalid()"_s, u"@ByteArray(x)"_s, u"semi;colon"_s, u"a=b"_s, u"%41"_s,
        u"two\nlines\r\t"_s, u"Größe ☂ 😀"_s, u"true"_s, u"007"_s, QString(5000, u'x')};
    {
        DefaultsStore store(path());
        for (qsizetype i = 0; i < texts.size(); ++i) {
            store.set(u"text%1"_s.arg(i), texts[i]);
        }
    }
    const DefaultsStore again(path());
    for (qsizetype i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(again.string(u"text%1"_s.arg(i)), texts[i]);
    }
}

TEST_F(DefaultsStoreTest, ValuesReadTheSameBeforeAndAfterARestart)
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
        const auto check = [&c](const DefaultsStore& store) {
            EXPECT_EQ(store.string(u"key"_s), c.text);
            EXPECT_EQ(store.boolean(u"key"_s, true), c.orTrue) << c.text.toStdString();
            EXPECT_EQ(store.boolean(u"key"_s, false), c.orFalse) << c.text.toStdString();
            EXPECT_EQ(store.integer(u"key"_s), c.integer) << c.text.toStdString();
        };
        {
            DefaultsStore store(path());
            store.set(u"key"_s, c.value);
            check(store);
        }
        check(DefaultsStore(path()));
    }
}

TEST_F(DefaultsStoreTest, WritesEachChangeAtOnceAndCreatesTheFolder)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"a/b/settings.ini"_s);
    DefaultsStore store(file);
    store.set(u"key"_s, u"value"_s);
    EXPECT_EQ(support::contentOf(file), "[General]\nkey=value\n");
    store.set(u"flag"_s, true);
    EXPECT_TRUE(support::contentOf(file).contains("flag=true\n"));
    store.remove(u"key"_s);
    EXPECT_EQ(support::contentOf(file), "[General]\nflag=true\n");
    EXPECT_EQ(store.keys(), QStringList{u"flag"_s});
}

TEST_F(DefaultsStoreTest, KeepsValuesForThisRunWhenTheFileCannotBeWritten)
{
    ASSERT_FALSE(createFolders(path() + u"/in the way"_s));
    DefaultsStore store(path());
    store.set(u"key"_s, u"value"_s);
    store.set(u"other"_s, 3);
    EXPECT_EQ(store.string(u"key"_s), u"value"_s);
    EXPECT_EQ(store.integer(u"other"_s), 3);
    store.remove(u"key"_s);
    EXPECT_FALSE(store.contains(u"key"_s));
}

TEST_F(DefaultsStoreTest, KeepsWhatCanBeReadOfADamagedFile)
{
    const QByteArray good = "[General]\nname=Anna\nport=8765\n";
    const std::vector<QByteArray> damages{
        "no equals sign\n",
        "[unclosed\n",
        QByteArray("\0\x01\xff\xfe garbage", 12) + '\n',
        "=no key\n",
        "cut=\"off",
    };
    for (const QByteArray& damage : damages) {
        support::writeFile(path(), good + damage);
        {
            DefaultsStore store(path());
            EXPECT_EQ(store.string(u"name"_s), u"Anna"_s) << damage.constData();
            store.set(u"new"_s, u"value"_s);
        }
        const DefaultsStore again(path());
        EXPECT_EQ(again.string(u"name"_s), u"Anna"_s) << damage.constData();
        EXPECT_EQ(again.integer(u"port"_s), 8765) << damage.constData();
        EXPECT_EQ(again.string(u"new"_s), u"value"_s) << damage.constData();
    }
}

TEST_F(DefaultsStoreTest, ServesThreadsSideBySide)
{
    constexpr int changes = 15;
    DefaultsStore store(path());
    std::vector<std::thread> threads;
    for (int self = 0; self < 4; ++self) {
        threads.emplace_back([&store, self] {
            const QString own = u"thread%1"_s.arg(self);
            for (int i = 1; i <= changes; ++i) {
                store.set(own, i);
                EXPECT_EQ(store.integer(own), i);
                store.set(u"passing%1"_s.arg(self), true);
                store.remove(u"passing%1"_s.arg(self));
                static_cast<void>(store.keys());
            }
        });
    }
    // Whatever the changes post to this thread is delivered while they go on.
    for (int i = 0; i < 200; ++i) {
        QCoreApplication::processEvents();
        std::this_thread::yield();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    const DefaultsStore again(path());
    EXPECT_EQ(again.keys(), QStringList({u"thread0"_s, u"thread1"_s, u"thread2"_s, u"thread3"_s}));
    for (int self = 0; self < 4; ++self) {
        EXPECT_EQ(again.integer(u"thread%1"_s.arg(self)), changes);
    }
}

} // namespace
} // namespace platform
