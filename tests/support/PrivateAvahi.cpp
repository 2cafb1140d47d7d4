#include "support/PrivateAvahi.h"

#include "support/PrivateHome.h"
#include "support/Waiting.h"

#include <QFile>

#include <stdexcept>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace support {

namespace {

// Lets everybody who can open its socket do everything, and starts no services.
constexpr auto busConfiguration = R"(<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

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

void start(ChildProcess& process, const Command& command, const QString& outputFile,
    const QByteArray& text)
{
    QFile::remove(outputFile); // of the one before
    process.start(command);
    const bool isThere = waitUntil(
        [&] { return !process.isRunning() || PrivateHome::contentOf(outputFile).contains(text); });
    if (isThere && process.isRunning()) return;
    throw std::runtime_error("not started: " + PrivateHome::contentOf(outputFile).toStdString());
}

} // namespace

PrivateAvahi::PrivateAvahi(QString hostName, QString networkNamespace)
    : hostName_(std::move(hostName)), networkNamespace_(std::move(networkNamespace))
{
}

void PrivateAvahi::startBus()
{
    const QString configuration = file(QStringLiteral("bus.conf"));
    const QString output = file(QStringLiteral("bus.log"));
    PrivateHome::write(
        configuration, QString::fromLatin1(busConfiguration).arg(busAddress()).toUtf8());
    start(bus_,
        {QStringLiteral("/usr/bin/dbus-daemon"),
            {QStringLiteral("--config-file=") + configuration, QStringLiteral("--nofork"),
                QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")},
            environment(), output, file(QStringLiteral("bus-errors.log")), {}},
        output, "unix:");
}

void PrivateAvahi::startDaemon()
{
    const QString configuration = file(QStringLiteral("avahi.conf"));
    const QString output = file(QStringLiteral("avahi.log"));
    PrivateHome::write(
        configuration, QString::fromLatin1(daemonConfiguration).arg(hostName_).toUtf8());
    const int network = networkNamespace_.isEmpty()
        ? -1
        : open(QFile::encodeName(networkNamespace_).constData(), O_RDONLY | O_CLOEXEC);
    start(daemon_,
        {QStringLiteral("/usr/sbin/avahi-daemon"),
            {QStringLiteral("--file=") + configuration, QStringLiteral("--no-drop-root"),
                QStringLiteral("--no-chroot"), QStringLiteral("--no-rlimits")},
            environment(), {}, output, [network] { enterNamespaces(network); }},
        output, "Server startup complete");
    if (network >= 0) close(network);
}

void PrivateAvahi::killBus()
{
    bus_.kill();
    daemon_.waitForEnd(patience);
}

QString PrivateAvahi::busAddress() const
{
    return QStringLiteral("unix:path=") + file(QStringLiteral("bus"));
}

QProcessEnvironment PrivateAvahi::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), busAddress());
    return environment;
}

} // namespace support
