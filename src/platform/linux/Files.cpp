#include "platform/Files.h"

#include "platform/linux/FileCalls.h"

#include <new>

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
std::optional<QByteArray> readToEnd(
    int descriptor, qint64 expectedSize, qint64 limit, std::error_code& error)
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
        if (count < 0 && errno != EINTR) {
            error = lastError();
            return std::nullopt;
        }
        used += std::max<ssize_t>(count, 0);
    }
    error = std::make_error_code(std::errc::file_too_large);
    return std::nullopt;
}

/// A file to append to, created with exactly `mode` when missing.
FileDescriptor openForAppending(const QByteArray& path, mode_t mode, WriteResult& result)
{
    // A FIFO or device in the file's place must not block.
    constexpr int flags = O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY;
    FileDescriptor file = openFile(path, flags);
    if (!file.isOpen() && errno == ENOENT) {
        file = openFile(path, flags | O_CREAT | O_EXCL, mode);
        if (file.isOpen()) {
            // Only the creator sets the mode; the umask has taken away what this gives back.
            if (::fchmod(file.get(), mode) != 0) result.modeError = lastError();
        } else if (errno == EEXIST) {
            // Somebody else has just created it.
            file = openFile(path, flags);
        }
    }
    if (!file.isOpen()) result.failure = lastError();
    return file;
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
    const QByteArray native = nativePath(path);
    struct stat status {};
    // Not even tried where there is nothing to do: it may not be permitted.
    if (::stat(native.constData(), &status) == 0 && (status.st_mode & 07777U) == mode) return {};
    return ::chmod(native.constData(), mode) == 0 ? std::error_code() : lastError();
}

std::optional<QByteArray> readFile(const QString& path, qint64 limit)
{
    std::error_code error;
    return readFile(path, limit, error);
}

std::optional<QByteArray> readFile(const QString& path, qint64 limit, std::error_code& error)
{
    error = {};
    // Opening a FIFO that nobody writes to would block without O_NONBLOCK.
    const FileDescriptor file = openFile(nativePath(path), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
        error = lastError();
    } else if (!S_ISREG(status.st_mode)) {
        error = std::make_error_code(std::errc::invalid_argument);
    } else if (status.st_size > limit) {
        error = std::make_error_code(std::errc::file_too_large);
    }
    if (error) return std::nullopt;
    try {
        return readToEnd(file.get(), status.st_size, limit, error);
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
        return std::nullopt;
    }
}

WriteResult appendToFile(const QString& path, ByteView bytes, mode_t mode)
{
    WriteResult result;
    FileDescriptor file = openForAppending(nativePath(path), mode, result);
    if (!result) result.failure = writeAll(file.get(), bytes);
    if (!result) result.failure = file.close();
    return result;
}

bool removeFile(const QString& path)
{
    return ::unlink(nativePath(path).constData()) == 0;
}

} // namespace platform
