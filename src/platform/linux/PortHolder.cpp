#include "platform/PortHolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <unistd.h>

namespace platform {

namespace {

// The columns of /proc/net/tcp and its like that are of interest here.
constexpr qsizetype localAddressColumn = 1;
constexpr qsizetype stateColumn = 3;
constexpr qsizetype inodeColumn = 9;
constexpr int listeningState = 0x0A;

struct SocketTable {
    QString name;
    bool listsConnectionsToo = false;
};

QList<SocketTable> tablesOf(Transport transport)
{
    if (transport == Transport::udp) return {{QStringLiteral("udp")}, {QStringLiteral("udp6")}};
    return {{QStringLiteral("tcp"), true}, {QStringLiteral("tcp6"), true}};
}

/// The inode of the socket that a line of a table is about, if it has the port open.
std::optional<QByteArray> inodeInLine(
    const QByteArray& line, const SocketTable& table, std::uint16_t port)
{
    const QList<QByteArray> fields = line.simplified().split(' ');
    if (fields.size() <= inodeColumn) return std::nullopt;
    const QByteArray& address = fields[localAddressColumn];
    const QByteArray portText = address.sliced(address.lastIndexOf(':') + 1);
    if (portText.toUInt(nullptr, 16) != port) return std::nullopt;
    const bool isListening = fields[stateColumn].toInt(nullptr, 16) == listeningState;
    if (table.listsConnectionsToo && !isListening) return std::nullopt;
    return fields[inodeColumn];
}

/// What links in /proc/<pid>/fd to the sockets look like.
QSet<QString> socketLinks(Transport transport, std::uint16_t port)
{
    QSet<QString> links;
    for (const SocketTable& table : tablesOf(transport)) {
        QFile file(QStringLiteral("/proc/net/") + table.name);
        if (!file.open(QIODevice::ReadOnly)) continue;
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (const auto inode = inodeInLine(line, table, port)) {
                links.insert(QStringLiteral("socket:[%1]").arg(QString::fromLatin1(*inode)));
            }
        }
    }
    return links;
}

bool holdsOneOf(const QSet<QString>& links, const QString& process)
{
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(process));
    // A link to what is no file counts as one to the system.
    for (const QString& entry : descriptors.entryList(QDir::Files | QDir::System)) {
        // QFileInfo would make a path of it, below the folder.
        QByteArray target(64, '\0');
        const QByteArray link = QFile::encodeName(descriptors.filePath(entry));
        const ssize_t length
            = ::readlink(link.constData(), target.data(), static_cast<std::size_t>(target.size()));
        if (length > 0 && links.contains(QString::fromLatin1(target.first(length)))) return true;
    }
    return false;
}

QString nameOf(const QString& process)
{
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

} // namespace

std::optional<PortHolder> holderOfPort(Transport transport, std::uint16_t port)
{
    const QSet<QString> links = socketLinks(transport, port);
    if (links.isEmpty()) return std::nullopt;
    for (const QString& process : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool isProcess = false;
        const qint64 id = process.toLongLong(&isProcess);
        if (isProcess && id != ::getpid() && holdsOneOf(links, process)) {
            return PortHolder{nameOf(process), id};
        }
    }
    return std::nullopt;
}

} // namespace platform
