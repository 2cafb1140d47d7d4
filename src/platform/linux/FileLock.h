#pragma once

namespace platform {

/// What came of trying to lock a file.
enum class FileLock {
    taken,
    heldByOther, ///< on this computer or another
    unavailable, ///< the file system has no locks
};

/// Locks the whole file, which must be open for writing, until the last descriptor of this opening
/// is closed. Does not wait.
///
/// It is a lock of the open file description: NFS and SMB hand these on to the server, as those of
/// fcntl(2), so that other computers see them; and unlike those they also hold against the same
/// process, and do not go when it closes another descriptor of the file. (flock(2) is handed on by
/// some file systems and kept by others to this computer alone.)
[[nodiscard]] FileLock lockFile(int descriptor);

} // namespace platform
