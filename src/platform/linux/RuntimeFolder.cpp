#include "platform/linux/RuntimeFolder.h"

#include "platform/linux/FileCalls.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

/// A folder that belongs to this user alone; not open otherwise.
FileDescriptor openOwnFolder(const QByteArray& path)
{
    FileDescriptor folder = openFile(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    struct stat status {};
    if (!folder.isOpen() || ::fstat(folder.get(), &status) != 0) return {};
    constexpr mode_t ofOthers = S_IRWXG | S_IRWXO;
    if (status.st_uid == ::geteuid() && (status.st_mode & ofOthers) == 0) return folder;
    errno = EPERM;
    return {};
}

FileDescriptor createOwnFolder(const QByteArray& path)
{
    constexpr mode_t ownersOnly = 0700;
    if (::mkdir(path.constData(), ownersOnly) != 0 && errno != EEXIST) return {};
    return openOwnFolder(path);
}

} // namespace

FileDescriptor openRuntimeFolder(const QString& program)
{
    const QString sessionFolder = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
    if (sessionFolder.startsWith(u'/') && openOwnFolder(nativePath(sessionFolder)).isOpen()) {
        FileDescriptor folder = createOwnFolder(nativePath(sessionFolder + u'/' + program));
        if (folder.isOpen()) return folder;
    }
    return createOwnFolder(
        nativePath(QStringLiteral("%1/%2-%3").arg(QDir::tempPath(), program).arg(::geteuid())));
}

} // namespace platform
