#pragma once

#include "platform/Bytes.h"
#include "platform/linux/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <sys/types.h>

// The system's file calls as the functions on files use them: all of them carry on after an
// interruption by a signal.
namespace platform {

/// Makes the call again for as long as signals interrupt it.
template <typename Call> auto uninterrupted(const Call& call)
{
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// The path as the system takes it. Empty, which the system never finds, when the path holds a NUL:
/// the system would take what stands before it and work on a different file.
[[nodiscard]] QByteArray nativePath(const QString& path);

/// open(2) with O_CLOEXEC; not open when it fails, and lastError() tells why.
[[nodiscard]] FileDescriptor openFile(const QByteArray& nativePath, int flags, mode_t mode = 0);
/// The same for a path that is relative to a folder.
[[nodiscard]] FileDescriptor openFileAt(
    int folder, const QByteArray& nativePath, int flags, mode_t mode = 0);

/// Writes all bytes, in one call where the system takes them so.
[[nodiscard]] std::error_code writeAll(int descriptor, ByteView bytes);

/// fsync(2): content and everything about the file.
[[nodiscard]] std::error_code syncAll(int descriptor);

} // namespace platform
