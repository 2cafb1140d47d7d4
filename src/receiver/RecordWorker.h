#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Crypto.h"
#include "platform/SerialQueue.h"
#include "protocol/RecordReader.h"
#include "receiver/PartialFile.h"
#include "receiver/ReceiveProgress.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace ferrylane {

/// Reads the records of an upload on a queue of its own, beside the receiving of the next chunk:
/// opens them, hashes the plaintext and writes it to the partial file.
///
/// All three happen on one thread, one record after the other, because a record is then still in
/// that core's cache. Spread over two cores they were measured to take half as much processor time
/// again.
class RecordWorker final : private PlaintextSink {
public:
    /// Called on the queue when a chunk has failed; later ones are dropped.
    using FailureHandler = std::function<void()>;

    /// `progress` and `queue` must outlive the worker. `onFailure` is called at most once.
    RecordWorker(const V4Transfer& transfer, const platform::SecretKey& key,
        std::unique_ptr<PartialFile> file, ReceiveProgress& progress, platform::SerialQueue& queue,
        FailureHandler onFailure);
    /// Waits until the queue has let go of this; deletes a file that has not been stored.
    ~RecordWorker() override;

    /// Takes `chunks`, which are views into `body`, over together with its memory. `body` keeps
    /// what is unread in it. Waits while all buffers are in use.
    void take(platform::ByteBuffer& body, std::vector<platform::ByteView> chunks);

    /// Waits for everything taken, and tells of its first failure.
    [[nodiscard]] std::optional<StreamFailure> settle();
    /// As settle(); then, whether the stream is whole.
    [[nodiscard]] std::optional<StreamFailure> finish();

    /// Plaintext bytes. Once settled, as the next.
    [[nodiscard]] quint64 totalBytes() const { return records_.totalBytes(); }
    /// As PartialFile::store().
    [[nodiscard]] std::optional<QString> store(
        const QString& name, const std::optional<QString>& senderName, std::error_code& error);

private:
    struct Batch {
        platform::ByteBuffer memory;
        std::vector<platform::ByteView> chunks;
    };

    /// Beside the one that is being received into. One is worked on; the others keep the worker
    /// busy while the connection waits for its turn on a core.
    static constexpr std::size_t batchesAtOnce = 4;

    void work(const std::shared_ptr<Batch>& batch);
    /// Throws nothing: what goes wrong here (no memory, say) ends the upload.
    [[nodiscard]] std::optional<StreamFailure> read(
        const std::vector<platform::ByteView>& chunks) noexcept;

    [[nodiscard]] platform::MutableByteView space(std::size_t length) override;
    [[nodiscard]] bool take(std::size_t length) override;
    [[nodiscard]] platform::Sha256Digest digest() override;

    platform::SerialQueue& queue_;
    FailureHandler onFailure_;

    // The queue's while batches are pending, the owner's once they are settled.
    ReceiveProgress& progress_;
    platform::Aes256Gcm cipher_;
    RecordReader records_;
    platform::ByteBuffer plaintext_;
    platform::Sha256 sha256_;
    std::unique_ptr<PartialFile> file_;

    std::mutex mutex_;
    std::condition_variable worked_;
    std::size_t pending_ = 0;                  ///< batches taken and not yet done with
    std::vector<platform::ByteBuffer> spares_; ///< memory for the next batches
    std::optional<StreamFailure> failure_;     ///< the first
};

} // namespace ferrylane
