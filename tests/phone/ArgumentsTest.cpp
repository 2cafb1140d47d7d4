#include "phone/Arguments.h"

#include "phone/Failure.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane::phone;

namespace {

std::variant<Arguments, Help> parse(const QString& commandLine)
{
    return parseArguments((u"ferrylane-phone "_s + commandLine).split(u' ', Qt::SkipEmptyParts));
}

} // namespace

TEST(PhoneArguments, tellLinkFilesAndOptionsApart)
{
    struct Row {
        QString commandLine;
        Arguments::Command command;
        std::optional<QString> link;
        QStringList files;
        bool skipsIdentify;
        std::optional<QString> senderName;
    };
    using Command = Arguments::Command;
    const Row rows[] = {
        {u"identify http://x"_s, Command::identify, u"http://x"_s, {}, false, {}},
        {u"identify --local"_s, Command::identify, {}, {}, false, {}},
        {u"upload http://x a b"_s, Command::upload, u"http://x"_s, {u"a"_s, u"b"_s}, false, {}},
        {u"upload --local a"_s, Command::upload, {}, {u"a"_s}, false, {}},
        {u"upload --name Pixel --skip-identify http://x a"_s, Command::upload, u"http://x"_s,
            {u"a"_s}, true, u"Pixel"_s},
        {u"upload http://x a --name=Pixel"_s, Command::upload, u"http://x"_s, {u"a"_s}, false,
            u"Pixel"_s},
        {u"upload --name= http://x a"_s, Command::upload, u"http://x"_s, {u"a"_s}, false, u""_s},
        {u"upload --local -- -a --help"_s, Command::upload, {}, {u"-a"_s, u"--help"_s}, false,
            {}},
    };
    for (const Row& row : rows) {
        const auto parsed = parse(row.commandLine);
        const auto* const arguments = std::get_if<Arguments>(&parsed);
        ASSERT_TRUE(arguments) << qPrintable(row.commandLine);
        EXPECT_EQ(arguments->command, row.command) << qPrintable(row.commandLine);
        EXPECT_EQ(arguments->link, row.link) << qPrintable(row.commandLine);
        EXPECT_EQ(arguments->files, row.files) << qPrintable(row.commandLine);
        EXPECT_EQ(arguments->skipsIdentify, row.skipsIdentify) << qPrintable(row.commandLine);
        EXPECT_EQ(arguments->senderName, row.senderName) << qPrintable(row.commandLine);
    }
}

TEST(PhoneArguments, giveTheHelpThatWasAskedFor)
{
    for (const auto& [commandLine, firstWords] :
        {std::pair(u"--help"_s, u"ferrylane-phone: "_s), {u"-h"_s, u"ferrylane-phone: "_s},
            {u"identify --help"_s, u"Usage: ferrylane-phone identify"_s},
            {u"upload -h"_s, u"Usage: ferrylane-phone upload"_s}}) {
        const auto parsed = parse(commandLine);
        const auto* const help = std::get_if<Help>(&parsed);
        ASSERT_TRUE(help) << qPrintable(commandLine);
        EXPECT_TRUE(help->text.startsWith(firstWords)) << qPrintable(commandLine);
    }
}

TEST(PhoneArguments, areRefusedWhenTheyDoNotFit)
{
    for (const QString& commandLine : {u""_s, u"download http://x"_s, u"identify"_s,
             u"identify http://x http://y"_s, u"identify --local http://x"_s,
             u"identify --name Pixel http://x"_s, u"identify --verbose http://x"_s, u"upload"_s,
             u"upload http://x"_s, u"upload --local"_s, u"upload http://x a --name"_s,
             u"upload -x http://x a"_s}) {
        try {
            static_cast<void>(parse(commandLine));
            ADD_FAILURE() << "taken: " << qPrintable(commandLine);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code(), ExitCode::usage) << qPrintable(commandLine);
        }
    }
}
