#include "core/ReceiveDestination.h"

#include "core/Settings.h"
#include "core/Text.h"
#include "platform/Files.h"
#include "support/PrivateUserFolders.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QUuid>

#include <gtest/gtest.h>

#include <vector>

using namespace ferrylane;

namespace {

/// A folder with files in it, for names to collide with.
class FolderWith {
public:
    explicit FolderWith(const std::vector<const char*>& names)
    {
        for (const char* const name : names) {
            support::writeFile(folder_.filePath(QString::fromUtf8(name)));
        }
    }

    [[nodiscard]] QString path() const { return folder_.path(); }
    /// It must be free, and the file system must take it.
    [[nodiscard]] QString destination(const QString& name) const
    {
        std::error_code error;
        const auto folder = platform::Folder::open(path(), error);
        QString destination = collisionSafeDestination(name, *folder);
        EXPECT_TRUE(folder->createFile(destination, error)) << destination.toStdString();
        folder->remove(destination);
        return destination;
    }

private:
    QTemporaryDir folder_;
};

} // namespace

TEST(Sanitize, replacesWhatMayNotBeInAName)
{
    const std::pair<QString, const char*> rows[]{{QString(), ""},
        {QStringLiteral("a/b:c"), "a_b_c"}, {QStringLiteral("..\\..\\x"), ".._.._x"},
        {u'a' + QString(QChar(0)) + u'b', "a_b"},
        // Nothing else is changed.
        {QStringLiteral(" .Größe*?\"<>|\n\u2215 "), " .Größe*?\"<>|\n\u2215 "}};
    for (const auto& [name, safe] : rows) {
        EXPECT_EQ(sanitize(name), QString::fromUtf8(safe));
    }
}

TEST(SenderFolderName, isCleanAndNeverEmpty)
{
    const std::pair<const char*, const char*> rows[]{{"Ferrylane Pixel 8", "Pixel 8"},
        {"FL Pixel 8", "Pixel 8"}, {"  Pixel 8\n", "Pixel 8"}, {"Ferrylane", "Ferrylane"},
        {"Ferrylane ", "Ferrylane"}, {"fl ", "fl"}, {"fl fl x", "fl x"},
        {"Ben's: Phone/2", "Ben's_ Phone_2"}, {"", "Unknown device"}, {" . .. ", "Unknown device"},
        {".", "Unknown device"}, {"..", "Unknown device"}, {"fl ..", "Unknown device"},
        {"../../etc", "_.._etc"}, {"..\\..", "_"}, {"/", "_"}, {"/etc/passwd", "_etc_passwd"},
        {"...hidden...", "hidden"}, {". a .b. ", "a .b"}};
    for (const auto& [sender, folder] : rows) {
        EXPECT_EQ(cleanSenderFolderName(QString::fromUtf8(sender)), QString::fromUtf8(folder))
            << '[' << sender << ']';
    }
    EXPECT_EQ(cleanSenderFolderName(std::nullopt), QStringLiteral("Unknown device"));
    EXPECT_EQ(cleanSenderFolderName(QString(QChar(0))), QStringLiteral("_"));
}

TEST(SenderFolderName, hasEightyCharactersAtMost)
{
    const QString letters = QString(100, u'x');
    EXPECT_EQ(cleanSenderFolderName(letters), letters.first(80));
    EXPECT_EQ(cleanSenderFolderName(letters.first(80)), letters.first(80));
    // Cut only after everything else.
    EXPECT_EQ(cleanSenderFolderName(QStringLiteral("..fl ") + letters).size(), 80);
    EXPECT_EQ(cleanSenderFolderName(QStringLiteral("fl ..") + letters), letters.first(80));

    const QString accented = QStringLiteral("e\u0301").repeated(81);
    EXPECT_EQ(characterCount(cleanSenderFolderName(accented)), 80);
}

TEST(SenderDirectory, isCreatedInTheReceiveFolder)
{
    const FolderWith receiveFolder({"file"});
    std::error_code error;
    const auto open = platform::Folder::open(receiveFolder.path(), error);
    const QString folder = receiveFolder.path() + QStringLiteral("/Pixel 8");
    EXPECT_EQ(senderReceiveDirectory(*open, QStringLiteral("FL Pixel 8"), error)->path(), folder);
    EXPECT_TRUE(QDir(folder).exists());
    EXPECT_EQ(senderReceiveDirectory(*open, std::nullopt, error)->path(),
        receiveFolder.path() + QStringLiteral("/Unknown device"));

    // Eighty characters of four bytes are too many bytes.
    const QString smileys = QStringLiteral("\U0001F600").repeated(80);
    EXPECT_EQ(senderReceiveDirectory(*open, smileys, error)->path(),
        receiveFolder.path() + u'/' + smileys.first(2 * qsizetype{63}));
    EXPECT_FALSE(senderReceiveDirectory(*open, QStringLiteral("file"), error));
    EXPECT_EQ(error, std::errc::not_a_directory);
}

TEST(Destination, isShortenedByWholeCharactersToWhatTheFileSystemTakes)
{
    const QString n = QStringLiteral("n");
    // Five bytes each, and one that is longer than a name may be.
    const QString marked = QStringLiteral("e\u0323\u0301");
    const QString monster = u'e' + QStringLiteral("\u0301").repeated(200);
    struct Row {
        QString name;
        QString destination;
        QString copy; ///< where the first is taken
    };
    for (const Row& row :
        {
            Row{n.repeated(255), n.repeated(255), n.repeated(251) + QStringLiteral(" (1)")},
            Row{n.repeated(4000) + QStringLiteral(".jpg"), n.repeated(251) + QStringLiteral(".jpg"),
                n.repeated(247) + QStringLiteral(" (1).jpg")},
            Row{marked.repeated(99) + QStringLiteral(".gz"),
                marked.repeated(50) + QStringLiteral(".gz"),
                marked.repeated(49) + QStringLiteral(" (1).gz")},
            // No extension is that long.
            Row{QStringLiteral("a.") + n.repeated(300), QStringLiteral("a.") + n.repeated(253),
                QStringLiteral("a.") + n.repeated(249) + QStringLiteral(" (1)")},
            Row{monster + QStringLiteral(".jpg"), monster.first(1 + 125) + QStringLiteral(".jpg"),
                monster.first(1 + 123) + QStringLiteral(" (1).jpg")},
            Row{QStringLiteral("..") + monster, QStringLiteral(".. (1)"), QStringLiteral(".. (2)")},
        }) {
        const FolderWith folder({});
        EXPECT_EQ(folder.destination(row.name), row.destination);
        support::writeFile(folder.path() + u'/' + row.destination);
        EXPECT_EQ(folder.destination(row.name), row.copy);
    }
}

TEST(Destination, takesTheNextFreeNumber)
{
    struct Row {
        std::vector<const char*> taken;
        const char *name, *destination;
    };
    // Of the last eight, four have no extension (hidden file, dot at the end, a blank in it), the
    // others name folders, which are there. Placeholders are text.
    const Row rows[]{{{}, "report.txt", "report.txt"},
        {{"report.txt"}, "report.txt", "report (1).txt"},
        {{"report.txt", "report (1).txt"}, "report.txt", "report (2).txt"},
        {{"report.txt", "report (2).txt"}, "report.txt", "report (1).txt"},
        {{"report (1).txt"}, "report.txt", "report.txt"},
        {{"report (1).txt"}, "report (1).txt", "report (1) (1).txt"},
        {{"archive.tar.gz"}, "archive.tar.gz", "archive.tar (1).gz"},
        {{"notes"}, "notes", "notes (1)"}, {{"a_b_c"}, "a/b:c", "a_b_c (1)"},
        {{"__"}, "//", "__ (1)"}, {{}, "a/../../b", "a_.._.._b"},
        {{".profile.bak"}, ".profile.bak", ".profile (1).bak"},
        {{"\u6587\u4ef6.\u56fe"}, "\u6587\u4ef6.\u56fe", "\u6587\u4ef6 (1).\u56fe"},
        {{"%1.%2"}, "%1.%2", "%1 (1).%2"}, {{".bashrc"}, ".bashrc", ".bashrc (1)"},
        {{"a."}, "a.", "a. (1)"}, {{"..."}, "...", "... (1)"},
        {{"Dr. Who"}, "Dr. Who", "Dr. Who (1)"}, {{}, "", " (1)"}, {{" (1)"}, "", " (2)"},
        {{}, ".", ". (1)"}, {{}, "..", ".. (1)"}};
    for (const Row& row : rows) {
        EXPECT_EQ(FolderWith(row.taken).destination(QString::fromUtf8(row.name)),
            QString::fromUtf8(row.destination))
            << row.name;
    }
}

TEST(Destination, countsFoldersAndDanglingLinksAsTaken)
{
    const FolderWith folder({});
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("name")));
    EXPECT_EQ(folder.destination(QStringLiteral("name")), QStringLiteral("name (1)"));
    ASSERT_TRUE(QFile::link(
        folder.path() + QStringLiteral("/nowhere"), folder.path() + QStringLiteral("/name (1)")));
    EXPECT_EQ(folder.destination(QStringLiteral("name")), QStringLiteral("name (2)"));
}

TEST(Destination, isRandomOnceAllNumbersAreTaken)
{
    const FolderWith folder({"x.y"});
    for (int number = 1; number <= 9998; ++number) {
        support::writeFile(folder.path() + QStringLiteral("/x (%1).y").arg(number));
    }
    const QString last = QStringLiteral("x (9999).y");
    EXPECT_EQ(folder.destination(QStringLiteral("x.y")), last);

    support::writeFile(folder.path() + u'/' + last);
    const QString name = folder.destination(QStringLiteral("x.y"));
    EXPECT_TRUE(name.endsWith(u"-x.y")) << name.toStdString();
    EXPECT_FALSE(QUuid::fromString(QStringView(name).chopped(4)).isNull()) << name.toStdString();
}
