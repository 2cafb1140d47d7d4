#pragma once

#include "platform/Bytes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>

namespace support {

/// How many bytes at a time an incremental parser is fed: small primes and powers, and all at once.
inline constexpr std::array<std::size_t, 7> fragmentSizes{1, 2, 3, 7, 16, 31, SIZE_MAX};

/// Calls `feed` with the next `size` bytes until it returns false or none are left.
inline void inFragments(
    platform::ByteView bytes, std::size_t size, const std::function<bool(platform::ByteView)>& feed)
{
    while (!bytes.empty()) {
        const std::size_t count = std::min(size, bytes.size());
        if (!feed(bytes.first(count))) return;
        bytes = bytes.subspan(count);
    }
}

} // namespace support
