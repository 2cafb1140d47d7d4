#pragma once

#include "platform/Bytes.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <memory>
#include <system_error>

namespace platform {

/// A new file that is written once, from start to end, with the mode that the umask leaves of 0666.
/// Until this goes it is locked against removeUnlessLocked(), also for other computers, where the
/// file system has locks. Serves one thread at a time. After a failed write it is good for nothing
/// but to be removed.
class NewFile {
public:
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Writes all of `bytes`. The system is asked now and then to begin writing back to the disk,
    /// so that sync() has little left to wait for.
    [[nodiscard]] std::error_code write(ByteView bytes);
    /// Returns when what was written is on the disk, and tells what closing would tell: some file
    /// systems report a full disk only then.
    [[nodiscard]] std::error_code sync();
    /// Writes all of this file to another.
    [[nodiscard]] std::error_code copyTo(NewFile& other) const;

private:
    friend class Folder;
    explicit NewFile(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
    std::uint64_t written_ = 0;
    std::uint64_t flushed_ = 0;
};

/// A folder held open: what is done in it is done there, wherever it is moved to and whatever takes
/// its place at its path. Names are those of its own entries: one with a slash or NUL, or an empty
/// one, names nothing. Safe from any thread.
class Folder {
public:
    /// Null, and `error` set, when that fails.
    [[nodiscard]] static std::unique_ptr<Folder> open(const QString& path, std::error_code& error);
    /// A folder in this one, or one that a link in it leads to; created when missing.
    [[nodiscard]] std::unique_ptr<Folder> openOrCreate(
        const QString& name, std::error_code& error) const;

    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    /// Where it is now: the path that it was opened by, as long as that leads to it.
    [[nodiscard]] QString path() const;
    /// Bytes of UTF-8 that a name may have here, 255 at most.
    [[nodiscard]] qsizetype longestName() const;
    /// Whether anything has this name, be it a link that leads nowhere.
    [[nodiscard]] bool contains(const QString& name) const;
    /// All names that are UTF-8, hidden ones included, in no order.
    [[nodiscard]] QStringList names() const;
    /// The folders among them, and the links to folders.
    [[nodiscard]] bool isFolder(const QString& name) const;

    /// Fails with std::errc::file_exists rather than opening something that is there, and with
    /// device_or_resource_busy when somebody is just about to remove it again.
    [[nodiscard]] std::unique_ptr<NewFile> createFile(
        const QString& name, std::error_code& error) const;

    /// Moves a file to `newName` in a folder of the same file system, atomically and without ever
    /// replacing anything: std::errc::file_exists when something is there. Where the file system
    /// has no such rename, a hard link or, failing that, an empty file claims the name first.
    /// std::errc::cross_device_link when `to` is on another file system.
    [[nodiscard]] std::error_code moveWithoutReplacing(
        const QString& name, const Folder& to, const QString& newName) const;

    /// True when it is gone because of this call.
    bool remove(const QString& name) const;
    /// The same for a regular file, unless somebody has it as a NewFile, on whatever computer. On a
    /// file system without locks nobody knows: there it must not have changed for `age`.
    bool removeUnlessLocked(const QString& name, std::chrono::seconds age) const;

    /// Makes the entries, such as a new name, survive a crash.
    [[nodiscard]] std::error_code sync() const;

private:
    Folder(int descriptor, QString path) : descriptor_(descriptor), path_(std::move(path)) {}

    int descriptor_;
    QString path_;
};

} // namespace platform
