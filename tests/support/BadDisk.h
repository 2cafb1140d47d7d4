#pragma once

#include <chrono>

namespace support {

/// While one is there, the disk is a bad one for all of this process.
class BadDisk {
public:
    struct Faults {
        std::chrono::milliseconds syncTime{}; ///< that syncing a file or folder takes
        int folderSyncError = 0;              ///< of <cerrno>, where folders cannot be synced
    };

    explicit BadDisk(Faults faults);
    ~BadDisk();
    BadDisk(const BadDisk&) = delete;
    BadDisk& operator=(const BadDisk&) = delete;
};

} // namespace support
