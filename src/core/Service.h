#pragma once

#include <QLatin1StringView>

#include <cstdint>

namespace ferrylane {

/// The receiver service's TCP port. Pairing links and discovery replies carry it.
inline constexpr std::uint16_t port = 8788;

/// The DNS-SD type under which the service is announced (RFC 6763, section 7).
inline constexpr QLatin1StringView dnsSdServiceType{"_ferrylane._tcp"};

} // namespace ferrylane
