#pragma once

namespace bench {

/// What this machine's cryptography gives, through the calls that the service makes, over pieces of
/// 1 MiB that stay in the processor's cache.
struct CryptoSpeed {
    struct Figures {
        double megabytesPerSecond; ///< by the clock
        double secondsPerGigabyte; ///< of processor time
    };
    Figures opening; ///< AES-256-GCM
    Figures hashing; ///< SHA-256

    /// MB/s of one thread that opens and then hashes everything.
    [[nodiscard]] double serialLimit() const
    {
        return 1 / (1 / opening.megabytesPerSecond + 1 / hashing.megabytesPerSecond);
    }
    /// Seconds of processor time per GB that is opened and hashed.
    [[nodiscard]] double serialCost() const
    {
        return opening.secondsPerGigabyte + hashing.secondsPerGigabyte;
    }
};

/// Takes about half a second.
[[nodiscard]] CryptoSpeed measureCrypto();

} // namespace bench
