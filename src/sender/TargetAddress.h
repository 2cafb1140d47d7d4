#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace ferrylane {

/// Where a paired phone is reached.
struct TargetAddress {
    QString host; ///< a name or a numeric address; IPv6 without brackets
    std::uint16_t port = 0;

    /// The host as it stands in a URL or a Host header: IPv6 in brackets.
    [[nodiscard]] QString hostInURL() const;
    [[nodiscard]] QString statusURL() const;
};

/// The host and port of a base URL; none when either is missing or the port is above 65535.
[[nodiscard]] std::optional<TargetAddress> parseTargetAddress(const QString& baseURL);

} // namespace ferrylane
