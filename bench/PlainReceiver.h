#pragma once

#include <QString>

#include <cstdint>

#include <sys/types.h>

namespace bench {

/// A process that takes uploads as the service does, but for the cryptography: it reads the same
/// bytes from its socket and writes each record's ciphertext to a file. What remains is the price
/// of the socket and of the file.
class PlainReceiver {
public:
    /// Forks: call it before any thread starts, and before this process takes much memory. Throws
    /// std::system_error. Each upload is written to `file` anew.
    explicit PlainReceiver(const QString& file);
    /// Ends the process.
    ~PlainReceiver();
    PlainReceiver(const PlainReceiver&) = delete;
    PlainReceiver& operator=(const PlainReceiver&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    [[nodiscard]] pid_t processId() const { return process_; }

private:
    struct Listener {
        int descriptor;
        std::uint16_t port;
    };
    static Listener listenOnLoopback();
    PlainReceiver(Listener listener, const QString& file);

    std::uint16_t port_;
    pid_t process_;
};

} // namespace bench
