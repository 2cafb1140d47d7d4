#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Crypto.h"
#include "platform/SerialQueue.h"
#include "receiver/PartialFile.h"

#include <array>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace ferrylane {

/// Writes an upload's plaintext to its partial file and hashes it, on a queue of its own, so that
/// both run beside the receiving and opening of the next record. The upload's own thread fills and
/// hands over buffers; it waits when all of them are in use.
class UploadWriter {
public:
    /// `queue` must outlive the writer.
    UploadWriter(std::unique_ptr<PartialFile> file, platform::SerialQueue& queue);
    /// Waits until the queue has let go of the buffers; deletes a file that has not been stored.
    ~UploadWriter();
    UploadWriter(const UploadWriter&) = delete;
    UploadWriter& operator=(const UploadWriter&) = delete;

    /// Room for the next piece.
    [[nodiscard]] platform::MutableByteView space(std::size_t length);
    /// Hands the piece in space() over. False when one handed over before could not be written.
    [[nodiscard]] bool take(std::size_t length);
    /// Waits for all pieces; false when one of them could not be written.
    [[nodiscard]] bool settle();
    /// The digest of all pieces, once; none when one of them could not be written.
    [[nodiscard]] std::optional<platform::Sha256Digest> digest();
    /// As PartialFile::store(); only after settle() or digest().
    [[nodiscard]] std::optional<QString> store(
        const QString& name, const std::optional<QString>& senderName, std::error_code& error);

private:
    /// One is being filled, one waits, one is being written.
    static constexpr std::size_t bufferCount = 3;

    void write(std::size_t buffer);

    platform::SerialQueue& queue_;
    std::unique_ptr<PartialFile> file_;
    platform::Sha256 sha256_;
    std::array<platform::ByteBuffer, bufferCount> buffers_;
    std::size_t filling_ = 0;

    std::mutex mutex_;
    std::condition_variable written_;
    std::size_t pending_ = 0; ///< buffers handed over and not yet written
    std::error_code failure_; ///< the first failed write; later pieces are dropped
};

} // namespace ferrylane
