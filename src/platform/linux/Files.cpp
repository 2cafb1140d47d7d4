#include "platform/Files.h"

#include "platform/linux/FileCalls.h"

#include <QRandomGenerator>

#include <cstdio>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

// A FIFO or device in a file's place must not block.
constexpr int withoutWaiting = O_NONBLOCK | O_NOCTTY;

std::optional<struct stat> statusOf(const QByteArray& path)
{
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 ? std::optional(status) : std::nullopt;
}

bool isFolderAt(const QByteArray& path)
{
    const auto status = statusOf(path);
    return status && S_ISDIR(status->st_mode);
}

std::error_code createFolder(const QByteArray& path, mode_t mode)
{
    if (::mkdir(path.constData(), mode) == 0) return {};
    const std::error_code error = lastError();
    // Whatever else mkdir minds (a read-only file system, an automounted place), a folder that is
    // there is all that is wanted.
    if (isFolderAt(path)) return {};
    return error == std::errc::file_exists ? std::make_error_code(std::errc::not_a_directory)
                                           : error;
}

QByteArray folderOf(const QByteArray& path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArrayLiteral(".") : path.first(std::max<qsizetype>(slash, 1));
}

/// Hidden, not to be guessed, and of a length that does not depend on the name of the file.
QByteArray temporaryName()
{
    auto* const random = QRandomGenerator::system();
    return '.' + QByteArray::number(random->generate64(), 16)
        + QByteArray::number(random->generate64(), 16) + ".tmp";
}

} // namespace

FilePath::FilePath(const QString& path) : native_(nativePath(path)) {}

FilePath FilePath::fromNative(QByteArray path)
{
    FilePath result;
    result.native_ = std::move(path);
    return result;
}

std::optional<FilePath> FilePath::fromUrl(const QUrl& url)
{
    if (!url.isLocalFile()) return std::nullopt;
    if (!url.host().isEmpty()) return FilePath(url.toLocalFile());
    // Not toLocalFile(), which makes text of it.
    const QByteArray encoded = url.path(QUrl::FullyEncoded).toLatin1();
    QByteArray path = QByteArray::fromPercentEncoding(encoded);
    if (path.contains('\0')) return std::nullopt;
    return fromNative(std::move(path));
}

QString FilePath::name() const
{
    return QString::fromUtf8(native_.sliced(native_.lastIndexOf('/') + 1));
}

bool FilePath::isFolder() const
{
    return isFolderAt(native_);
}

std::optional<qint64> FilePath::size() const
{
    const auto status = statusOf(native_);
    return status ? std::optional<qint64>(status->st_size) : std::nullopt;
}

FilePaths withoutFolders(FilePaths paths)
{
    paths.removeIf([](const FilePath& path) { return path.isFolder(); });
    return paths;
}

std::unique_ptr<FileReader> FileReader::open(const FilePath& path, std::error_code& error)
{
    FileDescriptor file = openFile(path.native(), O_RDONLY | withoutWaiting);
    struct stat status {};
    error = {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
        error = lastError();
    } else if (!S_ISREG(status.st_mode)) {
        error = std::make_error_code(std::errc::invalid_argument);
    }
    if (error) return nullptr;
    return std::unique_ptr<FileReader>(new FileReader(file.release(), status.st_size));
}

FileReader::~FileReader()
{
    ::close(descriptor_);
}

std::size_t FileReader::read(MutableByteView out, std::error_code& error)
{
    std::size_t used = 0;
    while (used < out.size()) {
        const ssize_t count = uninterrupted(
            [&] { return ::read(descriptor_, out.data() + used, out.size() - used); });
        if (count < 0) error = lastError();
        if (count <= 0) break;
        used += static_cast<std::size_t>(count);
    }
    return used;
}

std::optional<QByteArray> readFile(const QString& path, qint64 limit, std::error_code& error)
{
    const auto file = FileReader::open(path, error);
    if (file && file->size() > limit) error = std::make_error_code(std::errc::file_too_large);
    if (error) return std::nullopt;
    try {
        QByteArray content(file->size(), Qt::Uninitialized);
        const std::size_t length = file->read(
            std::as_writable_bytes(std::span(content.data(), std::size_t(content.size()))), error);
        content.truncate(static_cast<qsizetype>(length));
        return error ? std::nullopt : std::optional(std::move(content));
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
        return std::nullopt;
    }
}

std::optional<QByteArray> readFile(const QString& path, qint64 limit)
{
    std::error_code error;
    return readFile(path, limit, error);
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
    // Not even tried where there is nothing to do: it may not be permitted.
    const auto status = statusOf(native);
    if (status && (status->st_mode & 07777U) == mode) return {};
    return ::chmod(native.constData(), mode) == 0 ? std::error_code() : lastError();
}

Replacement::Replacement(const QString& path, ByteView content, mode_t mode)
    : target_(nativePath(path))
{
    const QByteArray temporary = folderOf(target_) + '/' + temporaryName();
    if (target_.isEmpty()) {
        result_.failure = std::make_error_code(std::errc::no_such_file_or_directory);
        return;
    }
    FileDescriptor file = openFile(temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
    if (!file.isOpen()) {
        result_.failure = lastError();
        return;
    }
    temporary_ = temporary;
    // Before the first byte, and it can only widen: the umask has taken away from `mode`. What has
    // no modes, such as FAT, refuses.
    if (::fchmod(file.get(), mode) != 0) result_.modeError = lastError();
    result_.failure = writeAll(file.get(), content);
    if (!result_) result_.failure = syncAll(file.get());
    if (!result_) result_.failure = file.close();
}

Replacement::~Replacement()
{
    if (!temporary_.isEmpty()) ::unlink(temporary_.constData());
}

bool Replacement::commit()
{
    if (result_) return false;
    if (::rename(temporary_.constData(), target_.constData()) == 0) {
        temporary_.clear();
    } else {
        result_.failure = lastError();
    }
    return !result_;
}

void Replacement::sync()
{
    const FileDescriptor folder = openFile(folderOf(target_), O_RDONLY | O_DIRECTORY);
    result_.syncError = folder.isOpen() ? syncAll(folder.get()) : lastError();
}

WriteResult writeFileAtomically(const QString& path, ByteView content, mode_t mode)
{
    Replacement replacement(path, content, mode);
    if (replacement.commit()) replacement.sync();
    return replacement.result();
}

WriteResult appendToFile(const QString& path, ByteView bytes, mode_t mode)
{
    WriteResult result;
    const QByteArray native = nativePath(path);
    constexpr int flags = O_WRONLY | O_APPEND | withoutWaiting;
    FileDescriptor file = openFile(native, flags);
    if (!file.isOpen() && errno == ENOENT) {
        file = openFile(native, flags | O_CREAT | O_EXCL, mode);
        // Only the creator sets the mode; the umask has taken away what this gives back.
        if (file.isOpen() && ::fchmod(file.get(), mode) != 0) result.modeError = lastError();
        // Somebody else may just have created it.
        if (!file.isOpen() && errno == EEXIST) file = openFile(native, flags);
    }
    if (!file.isOpen()) {
        result.failure = lastError();
        return result;
    }
    result.failure = writeAll(file.get(), bytes);
    if (!result) result.failure = file.close();
    return result;
}

} // namespace platform
