#include "phone/HelpTexts.h"

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

} // namespace

QString generalHelp()
{
    return QString::fromUtf8(generalText) + QString::fromUtf8(exitCodesText);
}

QString identifyHelp()
{
    return QString::fromUtf8(identifyText) + QString::fromUtf8(exitCodesText);
}

QString uploadHelp()
{
    return QString::fromUtf8(uploadText) + QString::fromUtf8(exitCodesText);
}

QString receiveHelp()
{
    return QString::fromUtf8(receiveText) + QString::fromUtf8(exitCodesText);
}

QString discoverHelp()
{
    return QString::fromUtf8(discoverText) + QString::fromUtf8(exitCodesText);
}

} // namespace ferrylane::phone
