#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace platform {

using ByteView = std::span<const std::byte>;
using MutableByteView = std::span<std::byte>;

inline ByteView bytesOf(const QByteArray& array)
{
    return std::as_bytes(std::span(array.constData(), static_cast<std::size_t>(array.size())));
}

inline QByteArray toByteArray(ByteView bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

/// Bytes seen as text without copying them; the view lives as long as the bytes.
inline QByteArrayView textViewOf(ByteView bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

/// Copies all of `from` to the start of `to`, which must be at least as long.
inline void copyBytes(ByteView from, MutableByteView to)
{
    // memcpy's arguments may not be null, and an empty span's data may be.
    if (!from.empty()) {
        std::memcpy(to.data(), from.data(), from.size());
    }
}

inline std::uint32_t readU32BigEndian(ByteView bytes)
{
    std::uint32_t value = 0;
    for (const std::byte byte : bytes.first<4>()) {
        value = (value << 8U) | std::to_integer<std::uint32_t>(byte);
    }
    return value;
}

inline void writeU32BigEndian(std::uint32_t value, MutableByteView out)
{
    for (std::size_t i = 0; i < 4; ++i) {
        out[i] = static_cast<std::byte>(value >> (24U - 8U * i));
    }
}

} // namespace platform
