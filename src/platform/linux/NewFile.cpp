#include "platform/Folder.h"

#include "platform/linux/FileCalls.h"

#include <vector>

#include <fcntl.h>

namespace platform {

namespace {

constexpr std::uint64_t writeBackStep = std::uint64_t{8} * 1024 * 1024;
constexpr std::size_t copyStep = std::size_t{256} * 1024;

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
    if (const std::error_code error = syncContent(descriptor_)) return error;
    // The lock goes with the last descriptor, so it is a second one that is closed.
    FileDescriptor second(::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0));
    return second.isOpen() ? second.close() : lastError();
}

std::error_code NewFile::copyTo(NewFile& other) const
{
    std::vector<std::byte> piece(copyStep);
    for (off64_t position = 0;;) {
        const ssize_t count = ::pread64(descriptor_, piece.data(), piece.size(), position);
        if (count == 0) return {};
        if (count < 0 && errno != EINTR) return lastError();
        if (count < 0) continue;
        const auto bytes = ByteView(piece).first(static_cast<std::size_t>(count));
        if (const std::error_code error = other.write(bytes)) return error;
        position += count;
    }
}

} // namespace platform
