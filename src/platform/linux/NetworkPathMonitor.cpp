#include "platform/NetworkPathMonitor.h"

#include "platform/NetworkInterfaces.h"
#include "platform/linux/FileDescriptor.h"

#include <QSocketNotifier>
#include <QTimer>

#include <optional>
#include <set>

#include <ifaddrs.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

namespace platform {

namespace {

/// What makes one path differ from another.
struct Path {
    std::set<std::pair<QString, QString>> addresses; ///< each with its interface before it
    QString defaultInterface;

    [[nodiscard]] bool isSatisfied() const { return !addresses.empty(); }
    bool operator==(const Path&) const = default;
};

/// The interfaces other than loopback that are up and have their carrier.
std::set<QString> workingInterfaces()
{
    constexpr unsigned working = IFF_UP | IFF_RUNNING;
    std::set<QString> names;
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) return names;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        if ((entry->ifa_flags & (working | IFF_LOOPBACK)) == working) {
            names.insert(QString::fromLocal8Bit(entry->ifa_name));
        }
    }
    return names;
}

Path currentPath()
{
    const std::set<QString> working = workingInterfaces();
    Path path;
    path.defaultInterface = defaultRouteInterface();
    for (const InterfaceAddress& address : interfaceAddresses()) {
        if (working.contains(address.interfaceName)) {
            path.addresses.emplace(address.interfaceName, address.text);
        }
    }
    return path;
}

/// A socket that becomes readable when the kernel changes anything that makes a path
/// (rtnetlink(7)).
FileDescriptor subscribed()
{
    FileDescriptor socket(
        ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
    sockaddr_nl groups{};
    groups.nl_family = AF_NETLINK;
    groups.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE
        | RTMGRP_IPV6_ROUTE;
    if (!socket.isOpen()
        || ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&groups), sizeof groups) != 0) {
        throw std::system_error(lastError());
    }
    return socket;
}

/// What has changed is looked up, not read here: messages get lost when there are many, and then
/// the socket says so once (ENOBUFS) and goes on.
void discardMessages(const FileDescriptor& socket)
{
    char ignored = 0;
    while (::recv(socket.get(), &ignored, 1, 0) >= 0 || errno == ENOBUFS || errno == EINTR) {}
}

} // namespace

struct NetworkPathMonitor::Watch {
    FileDescriptor changes = subscribed();
    QSocketNotifier notifier{changes.get(), QSocketNotifier::Read};
    QTimer nextLook;
    std::optional<Path> path; ///< the one that has been told
};

NetworkPathMonitor::NetworkPathMonitor() : watch_(std::make_unique<Watch>())
{
    watch_->nextLook.setSingleShot(true);
    connect(&watch_->nextLook, &QTimer::timeout, this, &NetworkPathMonitor::look);
    connect(&watch_->notifier, &QSocketNotifier::activated, this, [this] {
        watch_->notifier.setEnabled(false);
        watch_->nextLook.start(mergeInterval);
    });
    watch_->nextLook.start(0);
}

NetworkPathMonitor::~NetworkPathMonitor() = default;

void NetworkPathMonitor::look()
{
    discardMessages(watch_->changes);
    watch_->notifier.setEnabled(true);
    Path path = currentPath();
    if (path == watch_->path) return;
    watch_->path = std::move(path);
    Q_EMIT pathChanged(watch_->path->isSatisfied());
}

} // namespace platform
