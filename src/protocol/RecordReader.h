#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Crypto.h"
#include "platform/Interface.h"
#include "protocol/StreamFailure.h"
#include "protocol/V4Stream.h"

#include <optional>

namespace ferrylane {

/// Most record bytes that may be waiting to be read after a chunk has been added.
constexpr std::size_t maximumUnreadRecordBytes = 4194304;

/// Takes the plaintext of a stream of records, in order.
class PlaintextSink : public platform::Interface {
public:
    /// Where the next piece (1 to 1048576 bytes) is to be opened into. What is written there counts
    /// for nothing unless take() follows.
    [[nodiscard]] virtual platform::MutableByteView space(std::size_t length) = 0;
    /// The piece in space() is authentic. False when it cannot be stored.
    [[nodiscard]] virtual bool take(std::size_t length) = 0;
    /// The digest of everything taken.
    [[nodiscard]] virtual platform::Sha256Digest digest() = 0;
};

/// Reads the records of one upload: checks their order and lengths, opens them, hands the plaintext
/// to a sink, and compares the digest and size at the end. The first failure ends it; it must not
/// be fed after one.
class RecordReader {
public:
    /// `cipher` and `sink` must outlive the reader.
    RecordReader(V4Transfer transfer, platform::Aead& cipher, PlaintextSink& sink);

    /// Takes the next bytes of the record stream, cut anywhere, and reads every record that is
    /// complete by now.
    [[nodiscard]] std::optional<StreamFailure> feed(platform::ByteView bytes);
    /// The stream has ended: whether it was whole.
    [[nodiscard]] std::optional<StreamFailure> finish() const;

    /// Plaintext bytes so far.
    [[nodiscard]] quint64 totalBytes() const { return totalBytes_; }

private:
    struct Head {
        std::uint32_t length;
        std::uint32_t index;
    };
    struct Reading {
        std::size_t consumed = 0;
        std::optional<StreamFailure> failure;
    };

    /// Reads the records that `bytes` holds whole, from its start.
    [[nodiscard]] Reading readRecords(platform::ByteView bytes);
    [[nodiscard]] std::optional<StreamFailure> check(Head head) const;
    [[nodiscard]] std::optional<StreamFailure> openDataRecord(Head head, platform::ByteView sealed);
    [[nodiscard]] std::optional<StreamFailure> openFinalRecord(platform::ByteView sealed);

    V4Transfer transfer_;
    platform::Aead& cipher_;
    PlaintextSink& sink_;
    /// The record that is not complete yet, where a chunk did not end with its record.
    platform::ByteBuffer recordBuffer_;
    std::uint32_t expectedIndex_ = 0;
    quint64 totalBytes_ = 0;
    bool finalSeen_ = false;
};

} // namespace ferrylane
