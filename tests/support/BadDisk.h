#pragma once

#include <chrono>

namespace support {

/// While one is there, the disk is a bad one for all of this process.
class BadDisk {
public:
    /// For a program into which this is preloaded as a library: how many milliseconds syncing
    /// takes, from its start on.
    static constexpr const char* syncTimeVariable = "FERRYLANE_TEST_SYNC_TIME";

    struct Faults {
        std::chrono::milliseconds syncTime{}; ///< that syncing a file or folder takes
        int folderSyncError = 0;              ///< of <cerrno>, where folders cannot be synced
        bool windowsNames = false;            ///< what Windows has in no name is refused
    };

    explicit BadDisk(Faults faults);
    ~BadDisk();
    BadDisk(const BadDisk&) = delete;
    BadDisk& operator=(const BadDisk&) = delete;
};

} // namespace support
