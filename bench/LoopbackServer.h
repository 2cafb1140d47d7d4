#pragma once

#include <cstdint>
#include <functional>

#include <sys/types.h>

namespace bench {

/// A process that serves a free port of 127.0.0.1, one connection after the other.
class LoopbackServer {
public:
    /// Runs in that process, for a connected socket that is closed afterwards. What it throws ends
    /// the process; the peer then misses its answer.
    using Service = std::function<void(int connection)>;

    /// Forks: create it before any thread starts, and before this process takes much memory. Throws
    /// std::system_error.
    explicit LoopbackServer(const Service& service);
    /// Ends the process.
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    [[nodiscard]] pid_t processId() const { return process_; }

private:
    struct Listener {
        int descriptor;
        std::uint16_t port;
    };
    static Listener listenOnLoopback();
    LoopbackServer(Listener listener, const Service& service);

    std::uint16_t port_;
    pid_t process_;
};

} // namespace bench
