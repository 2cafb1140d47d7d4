#pragma once

#include "platform/Crypto.h"
#include "platform/ThreadQueue.h"

#include <condition_variable>
#include <mutex>

namespace ferrylane {

/// Hashes a file piece by piece on a thread of its own, beside the sealing and sending of the same
/// piece. Used by one thread.
class PieceHasher {
public:
    PieceHasher() = default;
    /// Waits until the last piece is let go of.
    ~PieceHasher();
    PieceHasher(const PieceHasher&) = delete;
    PieceHasher& operator=(const PieceHasher&) = delete;

    /// Waits for the piece before, and begins with this one, which must stay as it is until the
    /// next call or the destructor has returned.
    void update(platform::ByteView piece);
    /// The digest of all pieces. The next piece begins a new one.
    [[nodiscard]] platform::Sha256Digest finish();
    /// Forgets the pieces so far.
    void reset();

private:
    void wait();

    platform::Sha256 sha256_;
    std::mutex mutex_;
    std::condition_variable idle_;
    bool busy_ = false;
    platform::ThreadQueue queue_{"ferrylane.mac.sender.hash"};
};

} // namespace ferrylane
