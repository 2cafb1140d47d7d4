#include "platform/Files.h"

#include "platform/linux/FileCalls.h"

#include <cstdio>

#include <fcntl.h>

namespace platform {

namespace {

/// Whether the file system (or the kernel) lacks an operation, rather than refuses this use of it.
/// FAT says EPERM to hard links, network file systems and FUSE say one of the others.
bool isMissing(const std::error_code& error)
{
    return error == std::errc::invalid_argument || error == std::errc::function_not_supported
        || error == std::errc::operation_not_supported
        || error == std::errc::operation_not_permitted;
}

std::error_code renameWithoutReplacing(const QByteArray& from, const QByteArray& to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    return lastError();
}

/// A second name never replaces anything, and the file is whole under either. A crash in between
/// leaves both.
std::error_code linkAndUnlink(const QByteArray& from, const QByteArray& to)
{
    if (::linkat(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), 0) != 0) return lastError();
    if (::unlink(from.constData()) == 0) return {};
    const std::error_code error = lastError();
    ::unlink(to.constData());
    return error;
}

/// Claims the name with an empty file that only one can create, then replaces that. Anything that
/// others put in the place of the claim meanwhile would be lost: the last resort.
std::error_code claimAndRename(const QByteArray& from, const QByteArray& to)
{
    if (!openFile(to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600).isOpen()) return lastError();
    if (::rename(from.constData(), to.constData()) == 0) return {};
    const std::error_code error = lastError();
    ::unlink(to.constData());
    return error;
}

} // namespace

std::error_code moveWithoutReplacing(const QString& from, const QString& to)
{
    const QByteArray source = nativePath(from);
    const QByteArray target = nativePath(to);
    std::error_code error = renameWithoutReplacing(source, target);
    if (isMissing(error)) error = linkAndUnlink(source, target);
    if (isMissing(error)) error = claimAndRename(source, target);
    return error;
}

} // namespace platform
