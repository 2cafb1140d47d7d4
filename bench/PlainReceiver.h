#pragma once

#include "bench/LoopbackServer.h"

#include <QString>

namespace bench {

/// A process that takes uploads as the service does, but for the cryptography: it reads the same
/// bytes from its socket and writes each record's ciphertext to a file. What remains is the price
/// of the socket and of the file.
class PlainReceiver {
public:
    /// Forks, see LoopbackServer. Each upload is written to `file` anew.
    explicit PlainReceiver(const QString& file);

    [[nodiscard]] std::uint16_t port() const { return server_.port(); }
    [[nodiscard]] pid_t processId() const { return server_.processId(); }

private:
    LoopbackServer server_;
};

} // namespace bench
