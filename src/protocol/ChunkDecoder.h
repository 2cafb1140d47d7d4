#pragma once

#include "platform/ByteBuffer.h"
#include "protocol/StreamFailure.h"

#include <optional>

namespace ferrylane {

/// Longest wait for the end of a chunk-size line, in bytes.
constexpr std::size_t maximumChunkSizeLine = 128;
/// Largest chunk, in bytes.
constexpr std::size_t maximumChunkBytes = 2097152;

/// Takes a chunked body (RFC 9112, section 7.1) apart, as its bytes come in. A chunk is given out
/// only when all of it is there. The trailer section after the last chunk is not read.
class ChunkDecoder {
public:
    enum class Outcome {
        needMore,  ///< wait for more bytes
        chunk,     ///< `payload` is the content of one chunk
        lastChunk, ///< the body is complete; the decoder is not to be asked again
        failed     ///< `failure` tells why; the decoder is not to be asked again
    };
    struct Step {
        Outcome outcome;
        platform::ByteView payload{};
        StreamFailure failure{};
    };

    /// Consumes the next chunk from `body`. The payload is a view into the buffer and stays valid
    /// until bytes are added to it.
    [[nodiscard]] Step next(platform::ByteBuffer& body);

    /// How many bytes more than `body` holds the chunk that has begun needs; 0 between two chunks.
    [[nodiscard]] std::size_t missingBytes(const platform::ByteBuffer& body) const;

private:
    /// The outcome where the line does not give a size to go on with.
    [[nodiscard]] std::optional<Step> readSizeLine(platform::ByteBuffer& body);
    [[nodiscard]] Step readPayload(platform::ByteBuffer& body);

    std::optional<std::size_t> pendingChunkSize_;
};

} // namespace ferrylane
