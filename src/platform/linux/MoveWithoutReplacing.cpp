#include "platform/Folder.h"

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
