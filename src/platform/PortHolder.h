#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace platform {

enum class Transport { tcp, udp };

/// A program that has a port open.
struct PortHolder {
    QString program; ///< the name of its process, 15 bytes at most
    qint64 processId = 0;

    bool operator==(const PortHolder&) const = default;
};

/// Which program of this computer listens on a TCP port, or has a UDP port open, apart from this
/// one. None when there is none, or when it belongs to another user, whose files are not shown to
/// this one. Reads through all processes: for when something has gone wrong.
[[nodiscard]] std::optional<PortHolder> holderOfPort(Transport transport, std::uint16_t port);

} // namespace platform
