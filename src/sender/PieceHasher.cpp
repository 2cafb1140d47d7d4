#include "sender/PieceHasher.h"

namespace ferrylane {

PieceHasher::~PieceHasher()
{
    wait();
}

void PieceHasher::update(platform::ByteView piece)
{
    wait();
    busy_ = true;
    queue_.async([this, piece] {
        sha256_.update(piece);
        const std::lock_guard lock(mutex_);
        busy_ = false;
        idle_.notify_all();
    });
}

platform::Sha256Digest PieceHasher::finish()
{
    wait();
    return sha256_.finish();
}

void PieceHasher::reset()
{
    wait();
    sha256_ = platform::Sha256();
}

void PieceHasher::wait()
{
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return !busy_; });
}

} // namespace ferrylane
