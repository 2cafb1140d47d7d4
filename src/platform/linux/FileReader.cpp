#include "platform/FileReader.h"

#include "platform/linux/FileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

std::unique_ptr<FileReader> FileReader::open(const FilePath& path, std::error_code& error)
{
    FileDescriptor file = openFile(path.native(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
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
        const ssize_t count = ::read(descriptor_, out.data() + used, out.size() - used);
        if (count == 0) break;
        if (count < 0 && errno != EINTR) {
            error = lastError();
            break;
        }
        used += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return used;
}

} // namespace platform
