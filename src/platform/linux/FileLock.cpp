#include "platform/linux/FileLock.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>

namespace platform {

FileLock lockFile(int descriptor)
{
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (::fcntl(descriptor, F_OFD_SETLK, &whole) == 0) return FileLock::taken;
    return errno == EAGAIN || errno == EACCES ? FileLock::heldByOther : FileLock::unavailable;
}

} // namespace platform
