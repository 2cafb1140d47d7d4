#include "bench/LoopbackServer.h"

#include <cerrno>
#include <csignal>
#include <exception>
#include <system_error>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

// More than ever wait: a client that finds no room tries again only after a second.
constexpr int waitingConnections = 16;

void require(bool success, const char* what)
{
    if (!success) throw std::system_error(errno, std::system_category(), what);
}

[[noreturn]] void serve(int listener, const LoopbackServer::Service& service)
{
    try {
        for (;;) {
            const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            require(connection >= 0, "cannot accept");
            service(connection);
            close(connection);
        }
    } catch (const std::exception&) {
        _exit(1);
    }
}

} // namespace

LoopbackServer::Listener LoopbackServer::listenOnLoopback()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(descriptor >= 0 && bind(descriptor, generic, length) == 0
            && listen(descriptor, waitingConnections) == 0
            && getsockname(descriptor, generic, &length) == 0,
        "cannot listen on the loopback interface");
    return {descriptor, ntohs(address.sin_port)};
}

LoopbackServer::LoopbackServer(const Service& service) : LoopbackServer(listenOnLoopback(), service)
{
}

LoopbackServer::LoopbackServer(Listener listener, const Service& service)
    : port_(listener.port), process_(fork())
{
    require(process_ >= 0, "cannot start a server");
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        serve(listener.descriptor, service);
    }
    close(listener.descriptor);
}

LoopbackServer::~LoopbackServer()
{
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

} // namespace bench
