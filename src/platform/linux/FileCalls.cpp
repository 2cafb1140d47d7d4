#include "platform/linux/FileCalls.h"

#include <QFile>

#include <fcntl.h>

namespace platform {

QByteArray nativePath(const QString& path)
{
    if (path.contains(QChar(0))) return {};
    return QFile::encodeName(path);
}

FileDescriptor openFile(const QByteArray& nativePath, int flags, mode_t mode)
{
    return openFileAt(AT_FDCWD, nativePath, flags, mode);
}

FileDescriptor openFileAt(int folder, const QByteArray& nativePath, int flags, mode_t mode)
{
    return FileDescriptor(uninterrupted(
        [&] { return ::openat(folder, nativePath.constData(), flags | O_CLOEXEC, mode); }));
}

std::error_code writeAll(int descriptor, ByteView bytes)
{
    while (!bytes.empty()) {
        const ssize_t count
            = uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (count < 0) return lastError();
        // Nothing written and no reason given: trying again might go on for ever.
        if (count == 0) return std::make_error_code(std::errc::io_error);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

std::error_code syncAll(int descriptor)
{
    if (uninterrupted([&] { return ::fsync(descriptor); }) == 0) return {};
    return lastError();
}

} // namespace platform
