#include "platform/linux/FileCalls.h"

#include <QFile>

#include <fcntl.h>

namespace platform {

namespace {

template <typename Call> auto uninterrupted(const Call& call)
{
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

} // namespace

QByteArray nativePath(const QString& path)
{
    if (path.contains(QChar(0))) return {};
    return QFile::encodeName(path);
}

QByteArray nativeName(const QString& name)
{
    return name.contains(u'/') ? QByteArray() : nativePath(name);
}

QByteArray folderOf(const QByteArray& nativePath)
{
    const qsizetype slash = nativePath.lastIndexOf('/');
    if (slash < 0) return QByteArrayLiteral(".");
    return nativePath.first(std::max<qsizetype>(slash, 1));
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

std::error_code syncContent(int descriptor)
{
    if (uninterrupted([&] { return ::fdatasync(descriptor); }) == 0) return {};
    return lastError();
}

} // namespace platform
