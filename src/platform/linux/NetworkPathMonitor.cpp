#include "platform/NetworkPathMonitor.h"

#include "platform/NetworkInterfaces.h"
#include "platform/ThreadName.h"
#include "platform/linux/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <set>
#include <thread>

#include <ifaddrs.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <poll.h>
#include <sys/eventfd.h>
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
    for (const InterfaceAddress& address : interfaceAddresses().value_or(InterfaceAddresses())) {
        if (working.contains(address.interfaceName)) {
            path.addresses.emplace(address.interfaceName, address.text);
        }
    }
    return path;
}

FileDescriptor opened(int descriptor)
{
    if (descriptor < 0) {
        throw std::system_error(lastError());
    }
    return FileDescriptor(descriptor);
}

/// A socket that becomes readable when the kernel changes anything that makes a path
/// (rtnetlink(7)).
FileDescriptor subscribed()
{
    FileDescriptor socket
        = opened(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
    sockaddr_nl groups{};
    groups.nl_family = AF_NETLINK;
    groups.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE
        | RTMGRP_IPV6_ROUTE;
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&groups), sizeof groups) != 0) {
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

class NetworkPathMonitor::Watch {
public:
    Watch(const std::string& label, Handler handler)
        : handler_(std::move(handler))
        , changes_(subscribed())
        , closing_(opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)))
        , thread_([this, label] {
            setCurrentThreadName(label);
            run();
        })
    {
    }

    ~Watch()
    {
        ::eventfd_write(closing_.get(), 1);
        thread_.join();
    }

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    void run()
    {
        Path path = currentPath();
        handler_(path.isSatisfied());
        while (waitForChange()) {
            Path next = currentPath();
            if (next == path) continue;
            path = std::move(next);
            handler_(path.isSatisfied());
        }
    }

    /// False when it is time to end.
    [[nodiscard]] bool waitForChange() const
    {
        std::array<pollfd, 2> waits{{{closing_.get(), POLLIN, 0}, {changes_.get(), POLLIN, 0}}};
        constexpr int forever = -1;
        ::poll(waits.data(), waits.size(), forever);
        if (waits[0].revents != 0 || isClosingWithin(mergeInterval)) return false;
        discardMessages(changes_);
        return true;
    }

    [[nodiscard]] bool isClosingWithin(Duration duration) const
    {
        pollfd closing{closing_.get(), POLLIN, 0};
        const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(duration);
        return ::poll(&closing, 1, static_cast<int>(milliseconds.count())) > 0;
    }

    Handler handler_;
    FileDescriptor changes_;
    FileDescriptor closing_;
    std::thread thread_; ///< last: it uses the others
};

NetworkPathMonitor::NetworkPathMonitor(const std::string& label, Handler handler)
    : watch_(std::make_unique<Watch>(label, std::move(handler)))
{
}

NetworkPathMonitor::~NetworkPathMonitor() = default;

} // namespace platform
