#pragma once

#include "platform/Bytes.h"

#include <QString>

#include <memory>
#include <optional>
#include <system_error>

#include <sys/types.h>

namespace platform {

/// Whether anything is at `path`: a file, a folder, or a link whose target may be missing.
[[nodiscard]] bool itemExists(const QString& path);

/// Creates the folder and its missing parents; one that exists, or a link to one, is fine. `mode`
/// is for the folders that are created, less the umask. std::errc::not_a_directory when something
/// else is in the place of one of them.
[[nodiscard]] std::error_code createFolders(const QString& path, mode_t mode = 0777);

[[nodiscard]] std::error_code setMode(const QString& path, mode_t mode);

/// The whole content of a regular file, or of the one that a link leads to; none when it cannot be
/// read or is larger than `limit` bytes. Never waits for a FIFO or device.
[[nodiscard]] std::optional<QByteArray> readFile(const QString& path, qint64 limit);
/// The same, with the cause: std::errc::no_such_file_or_directory, file_too_large for one beyond
/// the limit, not_enough_memory, invalid_argument for what is no regular file.
[[nodiscard]] std::optional<QByteArray> readFile(
    const QString& path, qint64 limit, std::error_code& error);

/// What became of something written. Like an error code it is true when it has failed: with
/// `failure` the content is not there. The two others leave it there and tell what it lacks: the
/// mode, where the file system has none to set, and the certainty to survive a crash, where the
/// folder cannot be synced.
struct WriteResult {
    std::error_code failure{};
    std::error_code modeError{};
    std::error_code syncError{};

    explicit operator bool() const { return static_cast<bool>(failure); }
};

/// New content for a file, on the disk beside it under a hidden name, to take its place in one
/// step: all waiting for the disk is before and after that. It is removed when this goes unless it
/// has taken its place.
class Replacement {
public:
    /// Created with `mode` (less nothing: the umask is not applied) before the first byte, and
    /// synced. See result().
    Replacement(const QString& path, ByteView content, mode_t mode);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// Replaces the file. A link in its place is itself replaced; what it leads to stays as it was.
    /// On failure, the old content stands. Does not wait for the disk.
    [[nodiscard]] bool commit();
    /// Makes what commit() did survive a crash.
    void sync();

    [[nodiscard]] const WriteResult& result() const { return result_; }

private:
    struct Place;
    std::unique_ptr<Place> place_;
    WriteResult result_;
};

/// All steps of Replacement at once.
[[nodiscard]] WriteResult writeFileAtomically(const QString& path, ByteView content, mode_t mode);

/// Appends to a file that is created with `mode` (umask not applied) when missing, with one call to
/// the system where that takes all: lines of several writers do not mix. Nothing is synced.
[[nodiscard]] WriteResult appendToFile(const QString& path, ByteView bytes, mode_t mode);

/// Removes a file; true when it is gone because of this call.
bool removeFile(const QString& path);

} // namespace platform
