#include "support/BadDisk.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <thread>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace support {

namespace {

std::chrono::milliseconds syncTimeFromEnvironment()
{
    // Asked for before main(), while there is one thread. NOLINTNEXTLINE(concurrency-mt-unsafe)
    const char* const text = std::getenv(BadDisk::syncTimeVariable);
    return std::chrono::milliseconds(text ? std::atoi(text) : 0);
}

// What the functions below look at. NOLINTBEGIN(*-avoid-non-const-global-variables)
std::atomic<std::chrono::milliseconds> syncTime{syncTimeFromEnvironment()};
std::atomic<int> folderSyncError{};
// NOLINTEND(*-avoid-non-const-global-variables)

int sync(long call, int descriptor)
{
    std::this_thread::sleep_for(syncTime.load());
    const int error = folderSyncError;
    struct stat status {};
    if (error != 0 && fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        errno = error;
        return -1;
    }
    return static_cast<int>(::syscall(call, descriptor));
}

} // namespace

BadDisk::BadDisk(Faults faults)
{
    syncTime = faults.syncTime;
    folderSyncError = faults.folderSyncError;
}

BadDisk::~BadDisk()
{
    syncTime = std::chrono::milliseconds();
    folderSyncError = 0;
}

} // namespace support

// In the place of the C library's, for all of the program.
extern "C" {

int fsync(int fd)
{
    return support::sync(SYS_fsync, fd);
}

int fdatasync(int fd)
{
    return support::sync(SYS_fdatasync, fd);
}
}
