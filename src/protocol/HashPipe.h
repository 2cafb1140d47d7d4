#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Crypto.h"
#include "platform/ThreadQueue.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

namespace ferrylane {

/// Hashes pieces of a stream on a thread of its own (SHA-256), beside what else is done with them,
/// and owns the memory that they lie in meanwhile. Small files, which take less time than the
/// thread takes to start, are hashed at once. Used by one thread.
class HashPipe {
public:
    /// `buffersAtOnce`: how many may wait to be hashed, and so the memory that waits here.
    explicit HashPipe(std::size_t buffersAtOnce = 4) : spares_(buffersAtOnce) {}
    /// Waits until nothing is read any more.
    ~HashPipe();
    HashPipe(const HashPipe&) = delete;
    HashPipe& operator=(const HashPipe&) = delete;

    /// Hashes these bytes next. They must stay as they are until the buffer that they lie in has
    /// been exchanged or finish() has returned.
    void update(platform::ByteView bytes);
    /// Puts another buffer in the place of one whose bytes are still being hashed, with what is
    /// unread in it. Waits while all are in use.
    void exchange(platform::ByteBuffer& buffer);
    /// The digest of everything; the next bytes begin a new one.
    [[nodiscard]] platform::Sha256Digest finish();

private:
    void taskDone(); ///< under the lock
    void waitUntilIdle();

    platform::Sha256 sha256_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t pending_ = 0; ///< tasks
    std::vector<platform::ByteBuffer> spares_;
    std::optional<platform::ThreadQueue> queue_; ///< last: its thread uses the others
};

} // namespace ferrylane
