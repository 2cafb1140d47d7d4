// The C library's checked variants of the functions below would be in the way.
#undef _FORTIFY_SOURCE

#include "support/BadDisk.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>

#include <fcntl.h>
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
std::atomic<bool> hasWindowsNames{};
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

/// Whether Windows would not have a file of this name: that, as a system call tells it.
bool refuses(const char* name)
{
    const std::string_view view(name);
    if (!hasWindowsNames || view.find_first_of("\"*<>?|") == view.npos) return false;
    errno = EINVAL;
    return true;
}

} // namespace

BadDisk::BadDisk(Faults faults)
{
    syncTime = faults.syncTime;
    folderSyncError = faults.folderSyncError;
    hasWindowsNames = faults.windowsNames;
}

BadDisk::~BadDisk()
{
    syncTime = std::chrono::milliseconds();
    folderSyncError = 0;
    hasWindowsNames = false;
}

} // namespace support

// In the place of the C library's, for all of the program and its libraries.
#pragma GCC visibility push(default)
extern "C" {

int fsync(int fd)
{
    return support::sync(SYS_fsync, fd);
}

int fdatasync(int fd)
{
    return support::sync(SYS_fdatasync, fd);
}

int mkdirat(int folder, const char* name, mode_t mode)
{
    if (support::refuses(name)) return -1;
    return static_cast<int>(::syscall(SYS_mkdirat, folder, name, mode));
}

int linkat(int from, const char* name, int to, const char* newName, int flags)
{
    if (support::refuses(newName)) return -1;
    return static_cast<int>(::syscall(SYS_linkat, from, name, to, newName, flags));
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags)
{
    if (support::refuses(newName)) return -1;
    return static_cast<int>(::syscall(SYS_renameat2, from, name, to, newName, flags));
}

int openat(int folder, const char* name, int flags, ...)
{
    if (support::refuses(name)) return -1;
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));
}
}
