#include "platform/Files.h"

#include "platform/linux/FileCalls.h"

#include <fcntl.h>

namespace platform {

namespace {

constexpr std::uint64_t writeBackStep = std::uint64_t{8} * 1024 * 1024;

} // namespace

std::unique_ptr<NewFile> NewFile::create(const QString& path, std::error_code& error)
{
    FileDescriptor file
        = openFile(nativePath(path), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
    error = file.isOpen() ? std::error_code() : lastError();
    if (error) return nullptr;
    return std::unique_ptr<NewFile>(new NewFile(file.release()));
}

NewFile::~NewFile()
{
    // Who wants to know whether closing succeeds has called close().
    static_cast<void>(close());
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
    return syncContent(descriptor_);
}

std::error_code NewFile::close()
{
    return FileDescriptor(std::exchange(descriptor_, -1)).close();
}

} // namespace platform
