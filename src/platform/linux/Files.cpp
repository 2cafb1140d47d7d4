#include "platform/Files.h"

#include "platform/linux/FileCalls.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

bool isFolder(const QByteArray& path)
{
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::error_code createFolder(const QByteArray& path, mode_t mode)
{
    if (::mkdir(path.constData(), mode) == 0) return {};
    const std::error_code error = lastError();
    // Whatever else mkdir minds (a read-only file system, an automounted place), a folder that is
    // there is all that is wanted.
    if (isFolder(path)) return {};
    return error == std::errc::file_exists ? std::make_error_code(std::errc::not_a_directory)
                                           : error;
}

/// Everything up to the end of the file, which may have grown since its size was asked, or be one
/// of those under /proc that tell no size.
std::optional<QByteArray> readToEnd(int descriptor, qint64 expectedSize, qint64 limit)
{
    constexpr qsizetype growth = 65536;
    // Room for one byte more, so that the end is seen without growing.
    QByteArray content(expectedSize + 1, Qt::Uninitialized);
    qsizetype used = 0;
    while (used <= limit) {
        if (used == content.size()) content.resize(used + growth);
        const ssize_t count = ::read(
            descriptor, content.data() + used, static_cast<std::size_t>(content.size() - used));
        if (count == 0) {
            content.truncate(used);
            return content;
        }
        if (count < 0 && errno != EINTR) return std::nullopt;
        used += std::max<ssize_t>(count, 0);
    }
    return std::nullopt;
}

/// A file to append to, created with exactly `mode` when missing.
FileDescriptor openForAppending(const QByteArray& path, mode_t mode, std::error_code& error)
{
    // A FIFO or device in the file's place must not block.
    constexpr int flags = O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY;
    FileDescriptor file = openFile(path, flags);
    if (!file.isOpen() && errno == ENOENT) {
        file = openFile(path, flags | O_CREAT | O_EXCL, mode);
        if (file.isOpen()) {
            // Only the creator sets the mode; the umask has taken away what this gives back.
            if (::fchmod(file.get(), mode) != 0) error = lastError();
        } else if (errno == EEXIST) {
            // Somebody else has just created it.
            file = openFile(path, flags);
        }
    }
    if (!file.isOpen()) error = lastError();
    return file;
}

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool isRegularFileIn(DIR* folder, const char* name)
{
    struct stat status {};
    return ::fstatat(::dirfd(folder), name, &status, AT_SYMLINK_NOFOLLOW) == 0
        && S_ISREG(status.st_mode);
}

} // namespace

bool itemExists(const QString& path)
{
    struct stat status {};
    return ::lstat(nativePath(path).constData(), &status) == 0;
}

std::error_code createFolders(const QString& path, mode_t mode)
{
    const QByteArray whole = nativePath(path);
    // The first character is the root or part of the first name, never the end of one.
    for (qsizetype slash = whole.indexOf('/', 1); slash > 0;
         slash = whole.indexOf('/', slash + 1)) {
        if (const std::error_code error = createFolder(whole.first(slash), mode)) return error;
    }
    return createFolder(whole, mode);
}

std::error_code setMode(const QString& path, mode_t mode)
{
    if (::chmod(nativePath(path).constData(), mode) == 0) return {};
    return lastError();
}

std::optional<QByteArray> readFile(const QString& path, qint64 limit)
{
    // Opening a FIFO that nobody writes to would block without O_NONBLOCK.
    const FileDescriptor file = openFile(nativePath(path), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode) || status.st_size > limit) return std::nullopt;
    return readToEnd(file.get(), status.st_size, limit);
}

std::error_code appendToFile(const QString& path, ByteView bytes, mode_t mode)
{
    std::error_code error;
    FileDescriptor file = openForAppending(nativePath(path), mode, error);
    if (!error) error = writeAll(file.get(), bytes);
    return error ? error : file.close();
}

std::error_code syncFolder(const QString& path)
{
    const FileDescriptor folder = openFile(nativePath(path), O_RDONLY | O_DIRECTORY);
    if (!folder.isOpen()) return lastError();
    return syncFolderEntries(folder.get());
}

bool removeFile(const QString& path)
{
    return ::unlink(nativePath(path).constData()) == 0;
}

QStringList regularFilesIn(const QString& folder)
{
    QStringList names;
    const std::unique_ptr<DIR, FolderCloser> entries(::opendir(nativePath(folder).constData()));
    if (!entries) return names;
    while (const dirent* const entry = ::readdir(entries.get())) {
        const QByteArray raw(entry->d_name);
        QString name = QFile::decodeName(raw);
        // A name that is not UTF-8 would come out as the name of a different file.
        if (QFile::encodeName(name) == raw && isRegularFileIn(entries.get(), entry->d_name)) {
            names.append(std::move(name));
        }
    }
    return names;
}

} // namespace platform
