#include "support/PrivateHome.h"

#include "core/Encodings.h"

#include <QDir>
#include <QDirIterator>

namespace support {

namespace {

bool isPartial(const QString& path)
{
    return path.endsWith(QStringLiteral(".ferrylane-v4-part"));
}

} // namespace

QStringList PrivateHome::filesBelow(const QString& folder)
{
    const QDir root(folder);
    QStringList files;
    QDirIterator each(folder, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (each.hasNext()) {
        files.append(root.relativeFilePath(each.next()));
    }
    files.sort();
    return files;
}

QProcessEnvironment PrivateHome::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        if (name.startsWith(QStringLiteral("XDG_"))) environment.remove(name);
    }
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    // Nothing is announced on the real network.
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"),
        QStringLiteral("unix:path=") + path() + QStringLiteral("/no-bus"));
    environment.insert(QStringLiteral("HOME"), path());
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), path());
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    return environment;
}

QString PrivateHome::keyFile() const
{
    return path() + QStringLiteral("/.local/share/Ferrylane/receiver-key-v1.bin");
}

QString PrivateHome::logFile() const
{
    return path() + QStringLiteral("/.local/state/Ferrylane/ferrylane.log");
}

QString PrivateHome::transferLogFile() const
{
    return path() + QStringLiteral("/.local/share/Ferrylane/transfer-log-v1.json");
}

QString PrivateHome::settingsFile() const
{
    return path() + QStringLiteral("/.config/Ferrylane/settings.ini");
}

QString PrivateHome::receiveFolder() const
{
    return path() + QStringLiteral("/Downloads/Ferrylane");
}

platform::SecretKey PrivateHome::key() const
{
    return platform::SecretKey::fromBytes(platform::bytesOf(contentOf(keyFile()))).value();
}

QString PrivateHome::pairingLink() const
{
    return QStringLiteral("http://127.0.0.1:8788/?flkey=")
        + ferrylane::base64URLEncode(key().bytes());
}

QStringList PrivateHome::receivedFiles() const
{
    QStringList files = filesBelow(receiveFolder());
    files.removeIf(isPartial);
    return files;
}

QStringList PrivateHome::partialFiles() const
{
    QStringList files = filesBelow(receiveFolder());
    files.removeIf([](const QString& path) { return !isPartial(path); });
    return files;
}

QStringList PrivateHome::allFiles() const
{
    return filesBelow(path());
}

QString PrivateHome::ownFile(const QString& name) const
{
    return path() + QStringLiteral("/own/") + name;
}

QByteArray PrivateHome::received(const QString& path) const
{
    return contentOf(receiveFolder() + u'/' + path);
}

} // namespace support
