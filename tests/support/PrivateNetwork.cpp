#include "support/PrivateNetwork.h"

#include <cstring>
#include <fstream>
#include <string>

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

namespace {

bool unshareNetwork()
{
    if (unshare(CLONE_NEWNET) == 0) return true;

    // Without privileges a user namespace gives the right to make a network namespace.
    const std::string uid = std::to_string(getuid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
    std::ofstream("/proc/self/uid_map") << uid << ' ' << uid << " 1\n";
    return true;
}

bool bringLoopbackUp()
{
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strncpy(request.ifr_name, "lo", IFNAMSIZ - 1);
    bool up = ioctl(descriptor, SIOCGIFFLAGS, &request) == 0;
    request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP | IFF_RUNNING);
    up = up && ioctl(descriptor, SIOCSIFFLAGS, &request) == 0;
    close(descriptor);
    return up;
}

} // namespace

bool enterPrivateNetwork()
{
    return unshareNetwork() && bringLoopbackUp();
}

} // namespace support
