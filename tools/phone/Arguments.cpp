#include "phone/Arguments.h"

#include "phone/Failure.h"
#include "platform/HostName.h"
#include "protocol/PairingLink.h"

#include <QCommandLineParser>

#include <algorithm>

namespace ferrylane::phone {

namespace {

constexpr const char* generalText
    = R"(ferrylane-phone: plays the phone for a computer that runs Ferrylane.

Usage:
  ferrylane-phone identify LINK         ask the computer to prove that it is the paired one
  ferrylane-phone upload LINK FILE...   put files into the computer's receive folder
  ferrylane-phone receive               take files, as a phone does, and show its pairing code
  ferrylane-phone discover              list the devices on the local network
  ferrylane-phone COMMAND --help        more about a command

LINK is the pairing link behind a QR code, the computer's or that of "receive":
  http://HOST:PORT/?flkey=KEY
It is a credential: whoever has it can upload files. Quote it, for the shell's sake.

Log, settings and key of the played phone are in the folder ferrylane-phone of the user's data
folder.
)";

constexpr const char* exitCodesText = R"(
Exit code:
  0  done
  1  the command line is wrong
  2  nobody can be reached or found, or the connection was lost
  3  the computer does not hold the key of the link
  4  the computer has become busy with another transfer
  5  the computer refused the upload; its answer is printed
  6  a file on this side (to be sent, or the receiver key) cannot be read
)";

constexpr const char* identifyText = R"(Usage: ferrylane-phone identify [--local | LINK]

Sends a random challenge to the computer. Prints the computer's name when its answer proves that
the computer holds the key of the link and that the name is its own.

Options:
  --local     instead of LINK: this user's own receiver, on 127.0.0.1:8788
  -h, --help  print this
)";

constexpr const char* uploadText = R"(Usage: ferrylane-phone upload [OPTION...] LINK FILE...
       ferrylane-phone upload [OPTION...] --local FILE...

Uploads the files one after the other, encrypted. For each it makes the computer prove that it is
the paired one, waits while the computer is busy, and sends the file. The first failure ends it; the
files before it have been stored.

Options:
  --local          instead of LINK: this user's own receiver, on 127.0.0.1:8788
  --name NAME      the sender's name, after which the computer names the folder (default: the name
                   of this host)
  --skip-identify  do not ask for the proof; a wrong key then shows only when a record is refused
  -h, --help       print this
  --               what follows is a file, even if its name begins with "-"
)";

constexpr const char* receiveText = R"(Usage: ferrylane-phone receive [OPTION...]

Plays a phone that receives: shows its pairing code (and the link as text), answers discovery over
UDP, announces itself by DNS-SD and stores what is uploaded. Ctrl-C ends it.

Options:
  --dir DIR    where files are stored, in a folder for each sender (default: received)
  --name NAME  the phone's name (default: the name of this host and "phone")
  --port PORT  the TCP port (default: 8787, the one that pairing codes of phones must have)
  --busy N     answer the first N requests with BUSY
  -h, --help   print this
)";

constexpr const char* discoverText = R"(Usage: ferrylane-phone discover [--time SECONDS]

Looks for devices on the local network, for 3 seconds or as long as given, and lists their names:
with their addresses where they have answered over UDP, and without where DNS-SD names them.

Options:
  --time SECONDS  how long to look
  -h, --help      print this
)";

QString withExitCodes(const char* help)
{
    return QString::fromUtf8(help) + QString::fromUtf8(exitCodesText);
}

/// A command's options, and what is left of the command line without them.
class CommandLine {
public:
    explicit CommandLine(const char* help) : help_(withExitCodes(help))
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
        if (!isGood) fail(parser_.errorText());
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

    [[nodiscard]] Help help() const { return {help_}; }
    [[noreturn]] void fail(const QString& what) const
    {
        // The help's first paragraph is the usage.
        const QString usage = help_.left(help_.indexOf(QStringLiteral("\n\n")));
        throw Failure(ExitCode::usage, what + QStringLiteral("\n\n") + usage);
    }

private:
    static QString textOf(const QByteArray& argument) { return QString::fromUtf8(argument); }

    QString help_;
    QCommandLineParser parser_;
    QByteArrayList native_;
    QStringList rest_;
};

Arguments parseIdentify(const QByteArrayList& arguments)
{
    CommandLine line(identifyText);
    line.addFlag("local");
    if (!line.parse(arguments)) return line.help();
    const IdentifyArguments parsed{line.takeLink()};
    line.expectNoMore();
    return parsed;
}

Arguments parseUpload(const QByteArrayList& arguments)
{
    CommandLine line(uploadText);
    line.addFlag("local");
    line.addFlag("skip-identify");
    line.addValue("name");
    if (!line.parse(arguments)) return line.help();
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
    CommandLine line(receiveText);
    line.addValue("dir", QStringLiteral("received"));
    line.addValue("name", platform::localizedHostName() + QStringLiteral(" phone"));
    line.addValue("port", QString::number(phonePort));
    line.addValue("busy", QStringLiteral("0"));
    if (!line.parse(arguments)) return line.help();
    line.expectNoMore();
    return ReceiveArguments{line.value("dir"), line.value("name"),
        static_cast<std::uint16_t>(line.number("port", 1, 65535)), line.number("busy", 0, 1000000)};
}

Arguments parseDiscover(const QByteArrayList& arguments)
{
    CommandLine line(discoverText);
    line.addValue("time", QStringLiteral("3"));
    if (!line.parse(arguments)) return line.help();
    line.expectNoMore();
    return DiscoverArguments{std::chrono::seconds(line.number("time", 1, 3600))};
}

} // namespace

Arguments parseArguments(const QByteArrayList& arguments)
{
    if (arguments.size() < 2) {
        throw Failure(ExitCode::usage, withExitCodes(generalText).trimmed());
    }
    const QByteArray& command = arguments[1];
    const QByteArrayList forCommand = arguments.sliced(1);
    if (command == "identify") return parseIdentify(forCommand);
    if (command == "upload") return parseUpload(forCommand);
    if (command == "receive") return parseReceive(forCommand);
    if (command == "discover") return parseDiscover(forCommand);
    if (command == "--help" || command == "-h") return Help{withExitCodes(generalText)};
    throw Failure(ExitCode::usage,
        QStringLiteral("Unknown command '%1'; see ferrylane-phone --help")
            .arg(QString::fromUtf8(command)));
}

} // namespace ferrylane::phone
