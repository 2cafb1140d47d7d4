#include "support/Host.h"

#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QFile>

#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

namespace support {

namespace {

QString namespaceOf(pid_t process)
{
    return QStringLiteral("/proc/%1/ns/net").arg(process);
}

/// Enters another network namespace in a child.
std::function<void()> entering(const QString& networkNamespace)
{
    const std::shared_ptr<const int> descriptor(
        new int(open(QFile::encodeName(networkNamespace).constData(), O_RDONLY | O_CLOEXEC)),
        [](const int* opened) {
            close(*opened);
            delete opened;
        });
    return [descriptor] {
        if (setns(*descriptor, CLONE_NEWNET) != 0) _exit(126);
    };
}

} // namespace

Host::Host(const QString& name)
{
    Command command;
    command.program = QStringLiteral("/bin/sleep");
    command.arguments = {QStringLiteral("infinity")};
    command.beforeProgram = [] {
        if (unshare(CLONE_NEWNET) != 0) _exit(126);
    };
    holder_.start(command);
    const QString own = QFile::symLinkTarget(namespaceOf(getpid()));
    const QString held = namespaceOf(holder_.processId());
    const bool isThere
        = waitUntil([&] { return !holder_.isRunning() || QFile::symLinkTarget(held) != own; });
    if (!isThere || !holder_.isRunning()) throw std::runtime_error("no network namespace");

    ip(QStringLiteral("link set lo up"));
    avahi_ = std::make_unique<PrivateAvahi>(name, held);
}

void Host::connect(const Host& one, const Host& other)
{
    one.ip(QStringLiteral("link add eth0 type veth peer name eth0 netns %1")
               .arg(other.holder_.processId()));
    for (const Host* const host : {&one, &other}) {
        host->ip(QStringLiteral("link set eth0 up"));
    }
}

void Host::ip(const QString& arguments) const
{
    const Outcome outcome = run(QStringLiteral("/bin/ip"), arguments.split(u' '));
    if (outcome.exitCode != 0) throw std::runtime_error(outcome.errors.toStdString());
}

void Host::setAddress(const QString& address) const
{
    ip(QStringLiteral("address flush dev eth0"));
    ip(QStringLiteral("address add %1/24 brd + dev eth0").arg(address));
    ip(QStringLiteral("route replace default dev eth0"));
}

Outcome Host::run(const QString& program, const QStringList& arguments) const
{
    const QTemporaryDir streams;
    Command command = inside(program, arguments);
    command.outputFile = streams.filePath(QStringLiteral("output"));
    command.errorFile = streams.filePath(QStringLiteral("errors"));
    ChildProcess process;
    process.start(command);
    const auto exitCode = process.waitForEnd(std::chrono::seconds(60));
    return {exitCode.value_or(-1), contentOf(command.outputFile), contentOf(command.errorFile)};
}

void Host::start(ChildProcess& process, const QString& label, const QString& program,
    const QStringList& arguments) const
{
    Command command = inside(program, arguments);
    command.outputFile = home_.ownFile(label);
    writeFile(command.outputFile, {});
    process.start(command);
}

QByteArray Host::outputOf(const QString& label) const
{
    return contentOf(home_.ownFile(label));
}

Command Host::inside(const QString& program, const QStringList& arguments) const
{
    Command command;
    command.program = program;
    command.arguments = arguments;
    command.environment = home_.environment();
    if (avahi_) {
        command.environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), avahi_->busAddress());
    }
    command.beforeProgram = entering(namespaceOf(holder_.processId()));
    return command;
}

} // namespace support
