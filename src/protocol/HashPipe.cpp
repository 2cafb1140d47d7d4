#include "protocol/HashPipe.h"

#include <utility>

namespace ferrylane {

using platform::ByteBuffer;

namespace {

constexpr std::size_t smallPiece = 65536;

} // namespace

HashPipe::~HashPipe()
{
    waitUntilIdle();
}

void HashPipe::update(platform::ByteView bytes)
{
    std::unique_lock lock(mutex_);
    if (pending_ == 0 && bytes.size() <= smallPiece) {
        lock.unlock();
        sha256_.update(bytes);
        return;
    }
    if (!queue_) queue_.emplace("ferrylane.hash");
    queue_->async([this, bytes] {
        sha256_.update(bytes);
        const std::lock_guard guard(mutex_);
        taskDone();
    });
    ++pending_;
}

void HashPipe::exchange(ByteBuffer& buffer)
{
    std::unique_lock lock(mutex_);
    if (pending_ == 0) return;
    changed_.wait(lock, [this] { return !spares_.empty(); });
    ByteBuffer next = std::move(spares_.back());
    spares_.pop_back();
    next.append(buffer.unread());
    const auto used = std::make_shared<ByteBuffer>(std::exchange(buffer, std::move(next)));
    queue_->async([this, used] {
        used->consume(used->size());
        const std::lock_guard guard(mutex_);
        spares_.push_back(std::move(*used));
        taskDone();
    });
    ++pending_;
}

platform::Sha256Digest HashPipe::finish()
{
    waitUntilIdle();
    return sha256_.finish();
}

void HashPipe::taskDone()
{
    --pending_;
    // Under the lock: whoever waits may destroy this as soon as it sees nothing pending.
    changed_.notify_all();
}

void HashPipe::waitUntilIdle()
{
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return pending_ == 0; });
}

} // namespace ferrylane
