#pragma once

#include "platform/Bytes.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>
#include <system_error>

#include <sys/types.h>

namespace platform {

/// Where a file is, as the system has it: bytes, which need not be UTF-8 and so may be no text.
class FilePath {
public:
    FilePath() = default;
    // NOLINTNEXTLINE(*-explicit-*): each text is a path
    FilePath(const QString& path);
    [[nodiscard]] static FilePath fromNative(QByteArray path);
    /// None unless it is a file's of this computer.
    [[nodiscard]] static std::optional<FilePath> fromUrl(const QUrl& url);

    [[nodiscard]] const QByteArray& native() const { return native_; }
    /// The last component, for people and peers: U+FFFD stands for what is not text.
    [[nodiscard]] QString name() const;
    [[nodiscard]] bool isFolder() const;
    /// In bytes; none when there is no such file.
    [[nodiscard]] std::optional<qint64> size() const;

    bool operator==(const FilePath&) const = default;

private:
    QByteArray native_;
};

using FilePaths = QList<FilePath>;

/// The paths that are not those of folders, in their order.
[[nodiscard]] FilePaths withoutFolders(FilePaths paths);

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

/// The content of a regular file, or of the one that a link leads to; none when it cannot be read
/// or is larger than `limit` bytes. Never waits for a FIFO or device. `error` is
/// std::errc::no_such_file_or_directory, file_too_large for one beyond the limit,
/// not_enough_memory, invalid_argument for what is no regular file.
[[nodiscard]] std::optional<QByteArray> readFile(
    const QString& path, qint64 limit, std::error_code& error);
[[nodiscard]] std::optional<QByteArray> readFile(const QString& path, qint64 limit);

/// Creates the folder and its missing parents; one that exists, or a link to one, is fine. `mode`
/// is for the folders that are created, less the umask. std::errc::not_a_directory when something
/// else is in the place of one of them.
[[nodiscard]] std::error_code createFolders(const QString& path, mode_t mode = 0777);

[[nodiscard]] std::error_code setMode(const QString& path, mode_t mode);

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
    /// Created with exactly `mode` before the first byte, whatever the umask, and synced. See
    /// result().
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
    QByteArray target_;
    QByteArray temporary_; ///< empty when there is no such file
    WriteResult result_;
};

/// All steps of Replacement at once.
[[nodiscard]] WriteResult writeFileAtomically(const QString& path, ByteView content, mode_t mode);

/// Appends to a file that is created with exactly `mode` when missing, with one call to the system
/// where that takes all: lines of several writers do not mix. Nothing is synced.
[[nodiscard]] WriteResult appendToFile(const QString& path, ByteView bytes, mode_t mode);

} // namespace platform
