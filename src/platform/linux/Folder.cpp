#include "platform/Folder.h"

#include "platform/linux/FileCalls.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <ctime>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

constexpr std::uint64_t writeBackStep = std::uint64_t{8} * 1024 * 1024;
constexpr std::size_t copyStep = std::size_t{256} * 1024;

/// A name within a folder as the system takes it; empty also for what would lead out of it.
QByteArray nativeName(const QString& name)
{
    return name.contains(u'/') ? QByteArray() : nativePath(name);
}

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool isSame(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

FileDescriptor openFolderAt(int folder, const QByteArray& nativePath)
{
    FileDescriptor opened = openFileAt(folder, nativePath, O_RDONLY | O_DIRECTORY);
    // Files can be put into a folder that one may not look into.
    if (!opened.isOpen() && errno == EACCES) {
        opened = openFileAt(folder, nativePath, O_PATH | O_DIRECTORY);
    }
    return opened;
}

/// What came of trying to lock a file.
enum class FileLock {
    taken,
    heldByOther, ///< on this computer or another
    unavailable, ///< the file system has no locks
};

/// Locks the whole file, which must be open for writing, until the last descriptor of this opening
/// is closed. Does not wait.
///
/// It is a lock of the open file description: NFS and SMB hand these on to the server, as those of
/// fcntl(2), so that other computers see them; and unlike those they also hold against the same
/// process, and do not go when it closes another descriptor of the file. (flock(2) is handed on by
/// some file systems and kept by others to this computer alone.)
FileLock lockFile(int descriptor)
{
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (::fcntl(descriptor, F_OFD_SETLK, &whole) == 0) return FileLock::taken;
    return errno == EAGAIN || errno == EACCES ? FileLock::heldByOther : FileLock::unavailable;
}

/// Whether the file system (or the kernel) lacks an operation, rather than refuses this use of it.
/// FAT says EPERM to hard links, network file systems and FUSE say one of the others.
bool isMissing(const std::error_code& error)
{
    return error == std::errc::invalid_argument || error == std::errc::function_not_supported
        || error == std::errc::operation_not_supported
        || error == std::errc::operation_not_permitted;
}

/// A name in an open folder.
struct Place {
    int folder;
    QByteArray name;
};

std::error_code renameWithoutReplacing(const Place& from, const Place& to)
{
    if (::renameat2(
            from.folder, from.name.constData(), to.folder, to.name.constData(), RENAME_NOREPLACE)
        == 0) {
        return {};
    }
    return lastError();
}

/// A second name never replaces anything, and the file is whole under either. A crash in between
/// leaves both.
std::error_code linkAndUnlink(const Place& from, const Place& to)
{
    if (::linkat(from.folder, from.name.constData(), to.folder, to.name.constData(), 0) != 0) {
        return lastError();
    }
    if (::unlinkat(from.folder, from.name.constData(), 0) == 0) return {};
    const std::error_code error = lastError();
    ::unlinkat(to.folder, to.name.constData(), 0);
    return error;
}

/// Claims the name with an empty file that only one can create, then replaces that. Anything that
/// others put in the place of the claim meanwhile would be lost: the last resort.
std::error_code claimAndRename(const Place& from, const Place& to)
{
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    if (!openFileAt(to.folder, to.name, flags, 0600).isOpen()) return lastError();
    if (::renameat(from.folder, from.name.constData(), to.folder, to.name.constData()) == 0) {
        return {};
    }
    const std::error_code error = lastError();
    ::unlinkat(to.folder, to.name.constData(), 0);
    return error;
}

} // namespace

NewFile::~NewFile()
{
    // Who wants to know whether the content is safe has called sync().
    ::close(descriptor_);
}

std::error_code NewFile::write(ByteView bytes)
{
    if (const std::error_code error = writeAll(descriptor_, bytes)) return error;
    written_ += bytes.size();
    if (written_ - flushed_ >= writeBackStep) {
        // Only a hint: where it is not supported or fails, sync() does the work and tells of
        // errors.
        ::sync_file_range(descriptor_, static_cast<off64_t>(flushed_),
            static_cast<off64_t>(written_ - flushed_), SYNC_FILE_RANGE_WRITE);
        flushed_ = written_;
    }
    return {};
}

std::error_code NewFile::sync()
{
    if (uninterrupted([&] { return ::fdatasync(descriptor_); }) != 0) return lastError();
    // The lock goes with the last descriptor, so it is a second one that is closed.
    FileDescriptor second(::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0));
    return second.isOpen() ? second.close() : lastError();
}

std::error_code NewFile::copyTo(NewFile& other) const
{
    std::vector<std::byte> piece(copyStep);
    for (off64_t position = 0;;) {
        const ssize_t count = uninterrupted(
            [&] { return ::pread64(descriptor_, piece.data(), piece.size(), position); });
        if (count == 0) return {};
        if (count < 0) return lastError();
        const auto bytes = ByteView(piece).first(static_cast<std::size_t>(count));
        if (const std::error_code error = other.write(bytes)) return error;
        position += count;
    }
}

std::unique_ptr<Folder> Folder::open(const QString& path, std::error_code& error)
{
    FileDescriptor folder = openFolderAt(AT_FDCWD, nativePath(path));
    error = folder.isOpen() ? std::error_code() : lastError();
    if (error) return nullptr;
    return std::unique_ptr<Folder>(new Folder(folder.release(), path));
}

std::unique_ptr<Folder> Folder::openOrCreate(const QString& name, std::error_code& error) const
{
    const QByteArray native = nativeName(name);
    // It may be there already, or be refused for another reason and yet be there: opening tells.
    const bool isCreated = ::mkdirat(descriptor_, native.constData(), 0777) == 0;
    const std::error_code creating
        = isCreated ? std::make_error_code(std::errc::file_exists) : lastError();
    FileDescriptor folder = openFolderAt(descriptor_, native);
    error = folder.isOpen() ? std::error_code() : lastError();
    const bool isMissing = error == std::errc::no_such_file_or_directory;
    // A link that leads nowhere exists, and is missing all the same.
    if (isMissing && creating != std::errc::file_exists) error = creating;
    if (error) return nullptr;
    return std::unique_ptr<Folder>(new Folder(folder.release(), path() + u'/' + name));
}

Folder::~Folder()
{
    ::close(descriptor_);
}

QString Folder::path() const
{
    struct stat here {};
    struct stat there {};
    const bool isThere = ::stat(nativePath(path_).constData(), &there) == 0
        && ::fstat(descriptor_, &here) == 0 && isSame(here, there);
    if (isThere) return path_;
    std::array<char, PATH_MAX> now{};
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(descriptor_);
    const ssize_t length = ::readlink(link.constData(), now.data(), now.size());
    return length > 0 ? QFile::decodeName(QByteArray(now.data(), length)) : path_;
}

qsizetype Folder::longestName() const
{
    // FAT counts UTF-16 units, of which it takes 255, and says how many bytes these may become at
    // most; as many bytes are never more units.
    const long longest = ::fpathconf(descriptor_, _PC_NAME_MAX);
    return longest > 0 ? std::min<long>(longest, NAME_MAX) : NAME_MAX;
}

bool Folder::contains(const QString& name) const
{
    struct stat status {};
    return ::fstatat(descriptor_, nativeName(name).constData(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool Folder::isFolder(const QString& name) const
{
    struct stat status {};
    return ::fstatat(descriptor_, nativeName(name).constData(), &status, 0) == 0
        && S_ISDIR(status.st_mode);
}

QStringList Folder::names() const
{
    QStringList names;
    // Opened anew: reading moves a position that all descriptors of one opening share.
    FileDescriptor folder = openFileAt(descriptor_, ".", O_RDONLY | O_DIRECTORY);
    const std::unique_ptr<DIR, FolderCloser> entries(
        folder.isOpen() ? ::fdopendir(folder.get()) : nullptr);
    if (!entries) return names;
    static_cast<void>(folder.release());
    while (const dirent* const entry = ::readdir(entries.get())) {
        const QByteArray raw(entry->d_name);
        QString name = QFile::decodeName(raw);
        // A name that is not UTF-8 would come out as the name of a different file.
        if (raw != "." && raw != ".." && QFile::encodeName(name) == raw) {
            names.append(std::move(name));
        }
    }
    return names;
}

std::unique_ptr<NewFile> Folder::createFile(const QString& name, std::error_code& error) const
{
    // To be read as well, for a copy.
    FileDescriptor file
        = openFileAt(descriptor_, nativeName(name), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
    error = file.isOpen() ? std::error_code() : lastError();
    if (error) return nullptr;
    // For a moment it was there without its lock, and somebody may have taken it for abandoned.
    // (How many names a file has is not asked for: some file systems say 0 of all.)
    if (lockFile(file.get()) == FileLock::heldByOther || !contains(name)) {
        error = std::make_error_code(std::errc::device_or_resource_busy);
        return nullptr;
    }
    return std::unique_ptr<NewFile>(new NewFile(file.release()));
}

std::error_code Folder::sync() const
{
    return syncAll(descriptor_);
}

bool Folder::remove(const QString& name) const
{
    return ::unlinkat(descriptor_, nativeName(name).constData(), 0) == 0;
}

bool Folder::removeUnlessLocked(const QString& name, std::chrono::seconds age) const
{
    const FileDescriptor file
        = openFileAt(descriptor_, nativeName(name), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    const FileLock lock = lockFile(file.get());
    if (lock == FileLock::heldByOther) return false;
    const bool isOld = ::time(nullptr) - status.st_mtime >= age.count();
    return (lock == FileLock::taken || isOld) && remove(name);
}

std::error_code Folder::moveWithoutReplacing(
    const QString& name, const Folder& to, const QString& newName) const
{
    const Place source{descriptor_, nativeName(name)};
    const Place target{to.descriptor_, nativeName(newName)};
    std::error_code error = renameWithoutReplacing(source, target);
    if (isMissing(error)) error = linkAndUnlink(source, target);
    if (isMissing(error)) error = claimAndRename(source, target);
    return error;
}

} // namespace platform
