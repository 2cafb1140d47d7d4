#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace ferrylane {

/// Where a paired phone is reached.
struct TargetAddress {
    QString host; ///< a name or a numeric address; IPv6 without brackets, with its zone if any
    std::uint16_t port = 0;

    /// The host as it stands in a Host header: IPv6 in brackets, and without a zone, which says
    /// nothing to anybody else (RFC 6874, section 4).
    [[nodiscard]] QString hostInHeader() const;
    /// The URL that parseTargetAddress() reads.
    [[nodiscard]] QString baseURL() const;
};

/// The host and port of a base URL; none when either is missing or the port is above 65535.
[[nodiscard]] std::optional<TargetAddress> parseTargetAddress(const QString& baseURL);

} // namespace ferrylane
