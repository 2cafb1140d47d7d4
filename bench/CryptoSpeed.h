#pragma once

namespace bench {

/// What AES-256-GCM does with a piece.
enum class CipherUse { open, seal };

/// What this machine's cryptography gives, through the calls that the program makes, over pieces of
/// 1 MiB that stay in the processor's cache.
struct CryptoSpeed {
    struct Figures {
        double megabytesPerSecond; ///< by the clock
        double secondsPerGigabyte; ///< of processor time
    };
    Figures cipher;  ///< AES-256-GCM
    Figures hashing; ///< SHA-256

    /// MB/s of one thread that opens or seals everything, and hashes it.
    [[nodiscard]] double serialLimit() const
    {
        return 1 / (1 / cipher.megabytesPerSecond + 1 / hashing.megabytesPerSecond);
    }
    /// Seconds of processor time per GB that is opened or sealed, and hashed.
    [[nodiscard]] double serialCost() const
    {
        return cipher.secondsPerGigabyte + hashing.secondsPerGigabyte;
    }
};

/// Takes about half a second.
[[nodiscard]] CryptoSpeed measureCrypto(CipherUse use);

} // namespace bench
