#pragma once

#include "platform/Bytes.h"

#include <QString>
#include <QStringList>

#include <cstdint>
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

/// Replaces the file's content in one step that survives a crash: a temporary file beside it,
/// created with `mode` (less nothing: the umask is not applied), synced, renamed over it, and the
/// folder synced. A link at `path` is itself replaced; what it leads to stays as it was. On failure
/// the old content stands, unless only syncing the folder failed: then it is the new one, which a
/// crash may still undo.
[[nodiscard]] std::error_code writeFileAtomically(
    const QString& path, ByteView content, mode_t mode);

/// Appends to a file that is created with `mode` (umask not applied) when missing, with one call to
/// the system where that takes all: lines of several writers do not mix.
[[nodiscard]] std::error_code appendToFile(const QString& path, ByteView bytes, mode_t mode);

/// Moves a file within one file system, atomically and without ever replacing anything:
/// std::errc::file_exists when something is at `to`, be it a link that leads nowhere. Where the
/// file system has no such rename, a hard link or, failing that, an empty file claims the name
/// first.
[[nodiscard]] std::error_code moveWithoutReplacing(const QString& from, const QString& to);

/// Makes a folder's entries, such as a new name in it, survive a crash.
[[nodiscard]] std::error_code syncFolder(const QString& path);

/// Removes a file; true when it is gone because of this call.
bool removeFile(const QString& path);

/// Names of the regular files (not links) in a folder, hidden ones included, in no order.
[[nodiscard]] QStringList regularFilesIn(const QString& folder);

/// A new file that is written once, from start to end, with the mode that the umask leaves of 0666.
/// Serves one thread at a time. After a failed write it is good for nothing but to be removed.
class NewFile {
public:
    /// Fails with std::errc::file_exists rather than opening something that is there.
    [[nodiscard]] static std::unique_ptr<NewFile> create(
        const QString& path, std::error_code& error);

    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Writes all of `bytes`. The system is asked now and then to begin writing back to the disk,
    /// so that sync() has little left to wait for.
    [[nodiscard]] std::error_code write(ByteView bytes);
    /// Returns when what was written is on the disk.
    [[nodiscard]] std::error_code sync();
    /// Closes and tells what closing tells: some file systems report a full disk only here. Does
    /// nothing the second time; write() and sync() fail from now on.
    [[nodiscard]] std::error_code close();

private:
    explicit NewFile(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
    std::uint64_t written_ = 0;
    std::uint64_t flushed_ = 0;
};

} // namespace platform
