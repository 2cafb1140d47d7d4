#include "receiver/RecordWorker.h"

#include "core/Log.h"

#include <exception>
#include <utility>

namespace ferrylane {

RecordWorker::RecordWorker(const V4Transfer& transfer, const platform::SecretKey& key,
    std::unique_ptr<PartialFile> file, ReceiveProgress& progress, platform::SerialQueue& queue,
    FailureHandler onFailure)
    : queue_(queue)
    , onFailure_(std::move(onFailure))
    , progress_(progress)
    , cipher_(key)
    , records_(transfer, cipher_, *this)
    , file_(std::move(file))
    , spares_(batchesAtOnce)
{
}

RecordWorker::~RecordWorker()
{
    (void)settle();
}

void RecordWorker::take(platform::ByteBuffer& body, std::vector<platform::ByteView> chunks)
{
    platform::ByteBuffer next;
    {
        std::unique_lock lock(mutex_);
        worked_.wait(lock, [this] { return pending_ < batchesAtOnce; });
        next = std::move(spares_.back());
        spares_.pop_back();
    }
    next.append(body.unread());
    const auto batch = std::make_shared<Batch>(Batch{std::move(body), std::move(chunks)});
    body = std::move(next);
    platform::SerialQueue::Task task = [this, batch] { work(batch); };
    // Only now: were it counted and then not queued for a lack of memory, it would be waited for.
    const std::lock_guard lock(mutex_);
    queue_.async(std::move(task));
    ++pending_;
}

std::optional<StreamFailure> RecordWorker::settle()
{
    std::unique_lock lock(mutex_);
    worked_.wait(lock, [this] { return pending_ == 0; });
    return failure_;
}

std::optional<StreamFailure> RecordWorker::finish()
{
    if (const auto failure = settle()) return failure;
    return records_.finish();
}

std::optional<QString> RecordWorker::store(
    const QString& name, const std::optional<QString>& senderName, std::error_code& error)
{
    return file_->store(name, senderName, error);
}

void RecordWorker::work(const std::shared_ptr<Batch>& batch)
{
    // Only this queue sets the failure, so it may be looked at without the lock here.
    const bool failedBefore = failure_.has_value();
    const auto failure = failedBefore ? failure_ : read(batch->chunks);
    if (failure && !failedBefore) onFailure_();

    batch->memory.consume(batch->memory.size());
    const std::lock_guard lock(mutex_);
    failure_ = failure;
    spares_.push_back(std::move(batch->memory));
    --pending_;
    // Under the lock: whoever waits may destroy this as soon as it sees nothing pending.
    worked_.notify_all();
}

std::optional<StreamFailure> RecordWorker::read(
    const std::vector<platform::ByteView>& chunks) noexcept
{
    try {
        for (const platform::ByteView chunk : chunks) {
            if (const auto failure = records_.feed(chunk)) return failure;
        }
        return std::nullopt;
    } catch (const std::exception& error) {
        flLog(QStringLiteral("Could not open the upload: ") + QString::fromUtf8(error.what()));
        return failures::authenticationFailed;
    }
}

platform::MutableByteView RecordWorker::space(std::size_t length)
{
    return plaintext_.prepare(length);
}

bool RecordWorker::take(std::size_t length)
{
    progress_.authenticated();
    const platform::ByteView piece = plaintext_.prepare(length);
    if (const std::error_code error = file_->write(piece)) {
        flLog(QStringLiteral("Could not write the upload: ")
            + QString::fromStdString(error.message()));
        return false;
    }
    sha256_.update(piece);
    progress_.advanced(records_.totalBytes());
    return true;
}

platform::Sha256Digest RecordWorker::digest()
{
    // Asked for when the final record has been opened: of an empty file the only one.
    progress_.authenticated();
    return sha256_.finish();
}

} // namespace ferrylane
