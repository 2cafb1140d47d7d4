#pragma once

#include "platform/Bytes.h"
#include "platform/SecretKey.h"

#include <memory>
#include <optional>

namespace platform {

constexpr std::size_t gcmNonceBytes = 12;
constexpr std::size_t gcmTagBytes = 16;
constexpr std::size_t sha256Bytes = 32;

using GcmNonce = std::array<std::byte, gcmNonceBytes>;
using Sha256Digest = std::array<std::byte, sha256Bytes>;

/// AES-256-GCM with 96-bit nonces and 128-bit tags (NIST SP 800-38D), under one key. An object
/// serves one thread at a time.
class Aes256Gcm {
public:
    explicit Aes256Gcm(const SecretKey& key);
    ~Aes256Gcm();
    Aes256Gcm(const Aes256Gcm&) = delete;
    Aes256Gcm& operator=(const Aes256Gcm&) = delete;

    /// Writes ciphertext and tag, plaintext.size() + 16 bytes, to the start of `out`. Throws
    /// std::system_error when the library fails.
    void seal(
        const GcmNonce& nonce, ByteView associatedData, ByteView plaintext, MutableByteView out);

    /// Opens `sealed` (ciphertext and 16-byte tag) into `out`, which has room for the ciphertext's
    /// length. Returns the number of plaintext bytes, or none when the tag does not verify or
    /// `sealed` is shorter than a tag; `out` then holds nothing that may be used.
    [[nodiscard]] std::optional<std::size_t> open(
        const GcmNonce& nonce, ByteView associatedData, ByteView sealed, MutableByteView out);

private:
    struct Contexts;
    std::unique_ptr<Contexts> contexts_;
};

/// Incremental SHA-256 (FIPS 180-4). Serves one thread at a time.
class Sha256 {
public:
    Sha256();
    Sha256(Sha256&&) noexcept;
    Sha256& operator=(Sha256&&) noexcept;
    ~Sha256();

    void update(ByteView bytes);
    /// The digest of everything fed in; the object then starts anew.
    [[nodiscard]] Sha256Digest finish();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

/// HMAC-SHA256 (RFC 2104, FIPS 198-1).
[[nodiscard]] Sha256Digest hmacSha256(const SecretKey& key, ByteView message);

/// Fills `out` from the system's secure random generator; false when that fails.
[[nodiscard]] bool fillWithRandomBytes(MutableByteView out);

/// Compares in time that depends on the lengths alone.
[[nodiscard]] bool equalInConstantTime(ByteView a, ByteView b);

/// Overwrites the bytes in a way that the compiler does not drop.
void wipe(MutableByteView bytes);

} // namespace platform
