#pragma once

#include "platform/Bytes.h"
#include "platform/FilePath.h"

#include <memory>
#include <system_error>

namespace platform {

/// A regular file, read once from start to end. Serves one thread at a time.
class FileReader {
public:
    /// Never waits, as opening a FIFO would. Null, and `error` set, when it cannot be opened:
    /// std::errc::invalid_argument for what is no regular file.
    [[nodiscard]] static std::unique_ptr<FileReader> open(
        const FilePath& path, std::error_code& error);

    ~FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    /// As it was when the file was opened.
    [[nodiscard]] qint64 size() const { return size_; }
    /// Reads until `out` is full or the file ends; returns how much that was.
    [[nodiscard]] std::size_t read(MutableByteView out, std::error_code& error);

private:
    FileReader(int descriptor, qint64 size) : descriptor_(descriptor), size_(size) {}

    int descriptor_;
    qint64 size_;
};

} // namespace platform
