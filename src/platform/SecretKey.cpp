#include "platform/SecretKey.h"

#include "platform/Crypto.h"

#include <algorithm>
#include <system_error>

namespace platform {

std::optional<SecretKey> SecretKey::fromBytes(ByteView bytes)
{
    if (bytes.size() != length) return std::nullopt;

    SecretKey key;
    copyBytes(bytes, key.bytes_);
    return key;
}

SecretKey SecretKey::random()
{
    SecretKey key;
    if (!fillWithRandomBytes(key.bytes_)) {
        throw std::system_error(
            std::make_error_code(std::errc::io_error), "no secure random bytes");
    }
    return key;
}

SecretKey::SecretKey(SecretKey&& other) noexcept : bytes_(other.bytes_)
{
    wipe(other.bytes_);
}

SecretKey& SecretKey::operator=(SecretKey&& other) noexcept
{
    if (this != &other) {
        bytes_ = other.bytes_;
        wipe(other.bytes_);
    }
    return *this;
}

SecretKey::~SecretKey()
{
    wipe(bytes_);
}

SecretKey SecretKey::clone() const
{
    SecretKey copy;
    copy.bytes_ = bytes_;
    return copy;
}

} // namespace platform
