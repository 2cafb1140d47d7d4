#include "phone/Arguments.h"

#include "phone/Failure.h"
#include "phone/HelpTexts.h"
#include "platform/HostName.h"
#include "protocol/PairingQR.h"

#include <QCommandLineParser>

#include <algorithm>

namespace ferrylane::phone {

namespace {

Failure wrongUsage(const QString& what, const QString& help)
{
    // The help's first paragraph is the usage.
    const QString usage = help.left(help.indexOf(QStringLiteral("\n\n")));
    return {ExitCode::usage, what + QStringLiteral("\n\n") + usage};
}

/// A command's options, and what is left of the command line without them.
class CommandLine {
public:
    explicit CommandLine(QString help) : help_(std::move(help))
    {
        parser_.addOption({{QStringLiteral("h"), QStringLiteral("help")}, {}});
    }

    void addFlag(const char* option) { parser_.addOption({QString::fromLatin1(option), {}}); }
    void addValue(const char* option, const QString& fallback = QString())
    {
        parser_.addOption({QString::fromLatin1(option), {}, QStringLiteral("VALUE"), fallback});
    }

    /// False when help is wanted.
    [[nodiscard]] bool parse(const QByteArrayList& arguments)
    {
        native_ = arguments;
        QStringList texts;
        for (const QByteArray& argument : arguments) {
            texts << textOf(argument);
        }
        const bool isGood = parser_.parse(texts);
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

    /// A decimal number.
    [[nodiscard]] int number(const char* option, int minimum, int maximum) const
    {
        bool isNumber = false;
        const int number = value(option).toInt(&isNumber);
        if (!isNumber || number < minimum || number > maximum) {
            fail(QStringLiteral("--%1 takes a number from %2 to %3.")
                     .arg(QString::fromLatin1(option))
                     .arg(minimum)
                     .arg(maximum));
        }
        return number;
    }

    /// The link, in front of everything else; none with --local.
    [[nodiscard]] std::optional<QString> takeLink()
    {
        if (isSet("local")) return std::nullopt;
        if (rest_.isEmpty()) fail(QStringLiteral("The pairing link is missing."));
        return rest_.takeFirst();
    }
    /// The rest as paths, which need not be text.
    [[nodiscard]] platform::FilePaths paths() const
    {
        platform::FilePaths paths;
        // In the order of the command line, so each is looked for behind the one before.
        auto next = native_.begin();
        for (const QString& text : rest_) {
            next = std::find_if(next, native_.end(),
                [&](const QByteArray& argument) { return textOf(argument) == text; });
            if (next == native_.end()) break;
            paths << platform::FilePath::fromNative(*next++);
        }
        return paths;
    }
    void expectNoMore() const
    {
        if (!rest_.isEmpty()) fail(QStringLiteral("One argument too many: ") + rest_.first());
    }

    [[noreturn]] void fail(const QString& what) const { throw wrongUsage(what, help_); }

private:
    static QString textOf(const QByteArray& argument) { return QString::fromUtf8(argument); }

    QString help_;
    QCommandLineParser parser_;
    QByteArrayList native_;
    QStringList rest_;
};

Arguments parseIdentify(const QByteArrayList& arguments)
{
    CommandLine line(identifyHelp());
    line.addFlag("local");
    if (!line.parse(arguments)) return Help{identifyHelp()};
    const IdentifyArguments parsed{line.takeLink()};
    line.expectNoMore();
    return parsed;
}

Arguments parseUpload(const QByteArrayList& arguments)
{
    CommandLine line(uploadHelp());
    line.addFlag("local");
    line.addFlag("skip-identify");
    line.addValue("name");
    if (!line.parse(arguments)) return Help{uploadHelp()};
    UploadArguments parsed;
    parsed.link = line.takeLink();
    parsed.files = line.paths();
    parsed.skipsIdentify = line.isSet("skip-identify");
    if (line.isSet("name")) parsed.senderName = line.value("name");
    if (parsed.files.isEmpty()) line.fail(QStringLiteral("There is no file to upload."));
    return parsed;
}

Arguments parseReceive(const QByteArrayList& arguments)
{
    CommandLine line(receiveHelp());
    line.addValue("dir", QStringLiteral("received"));
    line.addValue("name", platform::localizedHostName() + QStringLiteral(" phone"));
    line.addValue("port", QString::number(phonePort));
    line.addValue("busy", QStringLiteral("0"));
    if (!line.parse(arguments)) return Help{receiveHelp()};
    line.expectNoMore();
    return ReceiveArguments{line.value("dir"), line.value("name"),
        static_cast<std::uint16_t>(line.number("port", 1, 65535)), line.number("busy", 0, 1000000)};
}

Arguments parseDiscover(const QByteArrayList& arguments)
{
    CommandLine line(discoverHelp());
    line.addValue("time", QStringLiteral("3"));
    if (!line.parse(arguments)) return Help{discoverHelp()};
    line.expectNoMore();
    return DiscoverArguments{std::chrono::seconds(line.number("time", 1, 3600))};
}

} // namespace

Arguments parseArguments(const QByteArrayList& arguments)
{
    if (arguments.size() < 2) {
        throw Failure(ExitCode::usage, generalHelp().trimmed());
    }
    const QByteArray& command = arguments[1];
    const QByteArrayList forCommand = arguments.sliced(1);
    if (command == "identify") return parseIdentify(forCommand);
    if (command == "upload") return parseUpload(forCommand);
    if (command == "receive") return parseReceive(forCommand);
    if (command == "discover") return parseDiscover(forCommand);
    if (command == "--help" || command == "-h") return Help{generalHelp()};
    throw Failure(ExitCode::usage,
        QStringLiteral("Unknown command '%1'; see ferrylane-phone --help")
            .arg(QString::fromUtf8(command)));
}

} // namespace ferrylane::phone
