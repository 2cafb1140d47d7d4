#include "phone/Arguments.h"

#include "phone/Failure.h"
#include "phone/HelpTexts.h"

#include <QCommandLineParser>

namespace ferrylane::phone {

namespace {

Failure wrongUsage(const QString& what, const QString& help)
{
    // The help's first paragraph is the usage.
    const QString usage = help.left(help.indexOf(QStringLiteral("\n\n")));
    return {ExitCode::usage, what + QStringLiteral("\n\n") + usage};
}

/// The options of both commands, and what is left of the command line without them.
class CommandLine {
public:
    explicit CommandLine(QString help) : help_(std::move(help))
    {
        parser_.addOptions(
            {{{QStringLiteral("h"), QStringLiteral("help")}, {}}, {QStringLiteral("local"), {}}});
    }

    void add(const QCommandLineOption& option) { parser_.addOption(option); }

    /// False when help is wanted.
    [[nodiscard]] bool parse(const QStringList& arguments)
    {
        const bool isGood = parser_.parse(arguments);
        if (isGood && isSet("help")) return false;
        if (!isGood) throw wrongUsage(parser_.errorText(), help_);
        rest_ = parser_.positionalArguments();
        return true;
    }

    [[nodiscard]] bool isSet(const char* option) const
    {
        return parser_.isSet(QString::fromLatin1(option));
    }
    [[nodiscard]] QString value(const char* option) const
    {
        return parser_.value(QString::fromLatin1(option));
    }

    /// The link, in front of everything else; none with --local.
    [[nodiscard]] std::optional<QString> takeLink()
    {
        if (isSet("local")) return std::nullopt;
        if (rest_.isEmpty()) fail(QStringLiteral("The pairing link is missing."));
        return rest_.takeFirst();
    }
    [[nodiscard]] const QStringList& rest() const { return rest_; }

    [[noreturn]] void fail(const QString& what) const { throw wrongUsage(what, help_); }

private:
    QString help_;
    QCommandLineParser parser_;
    QStringList rest_;
};

std::variant<Arguments, Help> parseIdentify(const QStringList& arguments)
{
    CommandLine line(identifyHelp());
    if (!line.parse(arguments)) return Help{identifyHelp()};
    Arguments parsed;
    parsed.command = Arguments::Command::identify;
    parsed.link = line.takeLink();
    if (!line.rest().isEmpty()) {
        line.fail(QStringLiteral("One argument too many: ") + line.rest().first());
    }
    return parsed;
}

std::variant<Arguments, Help> parseUpload(const QStringList& arguments)
{
    CommandLine line(uploadHelp());
    line.add({QStringLiteral("skip-identify"), {}});
    line.add({QStringLiteral("name"), {}, QStringLiteral("NAME")});
    if (!line.parse(arguments)) return Help{uploadHelp()};
    Arguments parsed;
    parsed.command = Arguments::Command::upload;
    parsed.link = line.takeLink();
    parsed.files = line.rest();
    parsed.skipsIdentify = line.isSet("skip-identify");
    if (line.isSet("name")) parsed.senderName = line.value("name");
    if (parsed.files.isEmpty()) line.fail(QStringLiteral("There is no file to upload."));
    return parsed;
}

} // namespace

std::variant<Arguments, Help> parseArguments(const QStringList& arguments)
{
    if (arguments.size() < 2) {
        throw Failure(ExitCode::usage, generalHelp().trimmed());
    }
    const QString& command = arguments[1];
    const QStringList forCommand = arguments.sliced(1);
    if (command == u"identify") return parseIdentify(forCommand);
    if (command == u"upload") return parseUpload(forCommand);
    if (command == u"--help" || command == u"-h") return Help{generalHelp()};
    throw Failure(ExitCode::usage,
        QStringLiteral("Unknown command '%1'; see ferrylane-phone --help").arg(command));
}

} // namespace ferrylane::phone
