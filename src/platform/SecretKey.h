#pragma once

#include "platform/Bytes.h"

#include <optional>

namespace platform {

/// A 32-byte (256-bit) symmetric key. Its memory is wiped when it goes. It can be moved but not
/// copied by accident: a second holder asks for clone(). There is no conversion to text; whoever
/// needs the key as text encodes bytes() where that can be seen.
class SecretKey {
public:
    static constexpr std::size_t length = 32;

    /// None unless there are exactly 32 bytes.
    [[nodiscard]] static std::optional<SecretKey> fromBytes(ByteView bytes);
    /// 32 bytes from the system's secure random generator. Throws std::system_error when that
    /// fails.
    [[nodiscard]] static SecretKey random();

    SecretKey(SecretKey&& other) noexcept;
    SecretKey& operator=(SecretKey&& other) noexcept;
    SecretKey(const SecretKey&) = delete;
    SecretKey& operator=(const SecretKey&) = delete;
    ~SecretKey();

    [[nodiscard]] SecretKey clone() const;
    [[nodiscard]] std::span<const std::byte, length> bytes() const { return bytes_; }

private:
    SecretKey() = default;

    std::array<std::byte, length> bytes_{};
};

} // namespace platform
