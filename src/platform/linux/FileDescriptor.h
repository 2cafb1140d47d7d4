#pragma once

#include <cerrno>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace platform {

/// What errno says. To be asked right after the call that failed.
[[nodiscard]] inline std::error_code lastError()
{
    return {errno, std::generic_category()};
}

/// Owns a file descriptor, or none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int value) : value_(value) {}
    FileDescriptor(FileDescriptor&& other) noexcept : value_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(value_, other.value_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { static_cast<void>(close()); }

    [[nodiscard]] bool isOpen() const { return value_ >= 0; }
    [[nodiscard]] int get() const { return value_; }
    [[nodiscard]] int release() { return std::exchange(value_, -1); }

    /// Does nothing the second time. A close that fails has closed all the same (close(2)): trying
    /// again might hit a descriptor that another thread has just been given.
    [[nodiscard]] std::error_code close()
    {
        if (!isOpen() || ::close(release()) == 0) return {};
        return lastError();
    }

private:
    int value_ = -1;
};

} // namespace platform
