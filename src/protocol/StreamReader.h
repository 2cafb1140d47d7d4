#pragma once

#include "protocol/ByteSource.h"
#include "protocol/HashPipe.h"
#include "protocol/StreamFailure.h"
#include "protocol/V4Stream.h"

#include <optional>
#include <variant>

namespace ferrylane {

/// Longest wait for the end of a chunk-size line, in bytes.
constexpr std::size_t maximumChunkSizeLine = 128;
/// Largest chunk, in bytes.
constexpr std::size_t maximumChunkBytes = 2097152;

/// The body of an upload has been whole: every record authentic, the digest and the size right.
struct StreamEnd {
    quint64 totalBytes = 0;
};

/// Plaintext, 1 to 1048576 bytes, in order; or the end; or why there is none. Nothing follows the
/// end or a failure.
using StreamStep = std::variant<platform::ByteView, StreamEnd, StreamFailure>;

/// Reads the body of one upload: takes the chunked coding (RFC 9112, section 7.1) apart, checks the
/// order and lengths of the records, opens them where they lie, and compares the digest and size at
/// the end. A chunk is looked at only when all of it is there; the trailer section after the last
/// one is not read. Used by one thread, which waits.
class StreamReader {
public:
    /// `received` holds what has come of the body. `source` must outlive this.
    StreamReader(V4Transfer transfer, const platform::SecretKey& key, ByteSource& source,
        platform::ByteBuffer received);

    /// A view stays valid until the next call.
    [[nodiscard]] StreamStep next();

private:
    struct Record {
        std::uint32_t length;
        std::uint32_t index;
        platform::MutableByteView sealed{}; ///< ciphertext and tag
        bool isSplit = false;               ///< lies in split_

        [[nodiscard]] std::size_t size() const { return recordOverheadBytes + length; }
    };
    template <typename T> using OrFailure = std::variant<T, StreamFailure>;

    // The chunks.
    [[nodiscard]] std::optional<StreamFailure> readChunk();
    [[nodiscard]] OrFailure<std::size_t> readChunkSize();
    [[nodiscard]] std::optional<StreamFailure> receive(std::size_t missing);
    void consumeContent(std::size_t count);

    // The records.
    /// The next one, if the chunk that is there completes it.
    [[nodiscard]] OrFailure<std::optional<Record>> takeRecord();
    [[nodiscard]] OrFailure<std::optional<Record>> parseRecord(
        platform::MutableByteView bytes) const;
    [[nodiscard]] std::size_t missingOfSplit() const;
    [[nodiscard]] std::optional<StreamFailure> check(const Record& record) const;
    [[nodiscard]] StreamStep openDataRecord(const Record& record);
    [[nodiscard]] std::optional<StreamFailure> openFinalRecord(const Record& record);
    [[nodiscard]] StreamStep end() const;

    V4Transfer transfer_;
    platform::Aes256Gcm cipher_;
    ByteSource& source_;

    platform::ByteBuffer body_;    ///< begins with the content of the chunk that is there
    std::size_t contentBytes_ = 0; ///< of it, not yet read
    bool isLastChunk_ = false;
    bool isBodyHashed_ = false; ///< pieces in body_ are being hashed

    platform::ByteBuffer split_; ///< a record whose bytes came in more than one chunk
    bool isSplitHashed_ = false;

    std::uint32_t expectedIndex_ = 0;
    quint64 totalBytes_ = 0;
    bool finalSeen_ = false;
    HashPipe hash_; ///< last: its thread reads the buffers
};

} // namespace ferrylane
