#include "platform/Folder.h"

#include "platform/linux/FileCalls.h"
#include "platform/linux/FileLock.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <climits>
#include <ctime>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

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

} // namespace

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

} // namespace platform
