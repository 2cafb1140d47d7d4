#pragma once

#include "protocol/RecordReader.h"

#include <vector>

namespace support {

/// Keeps the plaintext; from `failAfter` pieces on nothing can be stored.
class MemorySink final : public ferrylane::PlaintextSink {
public:
    platform::MutableByteView space(std::size_t length) override
    {
        piece_.resize(length);
        return piece_;
    }

    bool take(std::size_t length) override
    {
        stored = stored && pieces++ < failAfter;
        if (stored) content += platform::toByteArray(platform::ByteView(piece_).first(length));
        return stored;
    }

    platform::Sha256Digest digest() override
    {
        platform::Sha256 sha256;
        sha256.update(platform::bytesOf(content));
        return sha256.finish();
    }

    QByteArray content;
    std::size_t failAfter = SIZE_MAX;
    std::size_t pieces = 0;
    bool stored = true;

private:
    std::vector<std::byte> piece_;
};

} // namespace support
