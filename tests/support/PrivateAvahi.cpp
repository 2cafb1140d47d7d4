#include "support/PrivateAvahi.h"

#include "support/StartDaemon.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QFile>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace support {

namespace {

constexpr auto daemonConfiguration = R"([server]
host-name=%1
use-ipv4=yes
use-ipv6=no
[wide-area]
enable-wide-area=no
[publish]
publish-workstation=no
publish-hinfo=no
)";

// In the child. The daemon keeps its state in /run, where there can be but one of it.
void enterNamespaces(int network)
{
    const bool entered = (network < 0 || setns(network, CLONE_NEWNET) == 0)
        && unshare(CLONE_NEWNS) == 0
        && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
        && mount("none", "/run", "tmpfs", 0, nullptr) == 0;
    if (!entered) _exit(126);
}

} // namespace

PrivateAvahi::PrivateAvahi(QString hostName, QString networkNamespace)
    : hostName_(std::move(hostName)), networkNamespace_(std::move(networkNamespace))
{
}

void PrivateAvahi::startDaemon()
{
    const QString configuration = file(QStringLiteral("avahi.conf"));
    writeFile(configuration, QString::fromLatin1(daemonConfiguration).arg(hostName_).toUtf8());
    const int network = networkNamespace_.isEmpty()
        ? -1
        : open(QFile::encodeName(networkNamespace_).constData(), O_RDONLY | O_CLOEXEC);
    support::startDaemon(daemon_,
        {QStringLiteral("/usr/sbin/avahi-daemon"),
            {QStringLiteral("--file=") + configuration, QStringLiteral("--no-drop-root"),
                QStringLiteral("--no-chroot"), QStringLiteral("--no-rlimits")},
            environment(), {}, file(QStringLiteral("avahi.log")),
            [network] { enterNamespaces(network); }},
        "Server startup complete");
    if (network >= 0) close(network);
}

void PrivateAvahi::killBus()
{
    bus_.kill();
    daemon_.waitForEnd(patience);
}

} // namespace support
