#pragma once

#include "protocol/HashPipe.h"
#include "protocol/V4Stream.h"

namespace ferrylane {

/// Writes the body of one upload, the mirror of StreamReader: seals each piece of the file as a
/// record in a chunk of its own, hashes beside, and ends with the digest. All bytes are appended to
/// a buffer, `out`, that the caller sends. Used by one thread.
class StreamWriter {
public:
    StreamWriter(V4Transfer transfer, const platform::SecretKey& key);

    /// Room for the file's next piece, `size` bytes; the caller fills it and calls seal().
    [[nodiscard]] platform::MutableByteView room(std::size_t size);
    /// Seals the first `count` bytes of the room, 1 to 1048576. Throws std::length_error for
    /// another count and when the stream is full: a nonce must not be used twice.
    void seal(std::size_t count, platform::ByteBuffer& out);
    /// room() and seal() of a piece that lies elsewhere.
    void write(platform::ByteView piece, platform::ByteBuffer& out);
    /// There are 4294967295 records: the next index is the final record's.
    [[nodiscard]] bool isFull() const { return recordCount_ == finalRecordIndex; }
    /// Appends the final record and the last chunk. Nothing may follow.
    void finish(platform::ByteBuffer& out);

private:
    void appendChunk(std::uint32_t index, const QByteArray& associatedData,
        platform::ByteView plaintext, platform::ByteBuffer& out);

    V4Transfer transfer_;
    platform::Aes256Gcm cipher_;
    std::uint32_t recordCount_ = 0;
    quint64 totalBytes_ = 0;
    platform::ByteBuffer piece_;
    bool isPieceHashed_ = false; ///< the bytes in piece_ are being hashed
    // Hashing takes longest, so that more buffers would only all be full. Last: its thread reads
    // piece_.
    HashPipe hash_{1};
};

} // namespace ferrylane
