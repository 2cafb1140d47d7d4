#pragma once

#include "protocol/StreamReader.h"

#include <algorithm>

namespace support {

/// Gives bytes in fragments of at most `fragmentSize`, then the end.
class MemorySource final : public ferrylane::ByteSource {
public:
    explicit MemorySource(platform::ByteView bytes, std::size_t fragmentSize = SIZE_MAX)
        : rest_(bytes), fragmentSize_(fragmentSize)
    {
    }

    Read read(platform::ByteBuffer& buffer, std::size_t wanted, std::size_t maximum) override
    {
        if (rest_.empty()) return {.isEnd = true, .error = {}};
        for (std::size_t count = 0; count < wanted && !rest_.empty();) {
            const std::size_t size = std::min({fragmentSize_, maximum - count, rest_.size()});
            buffer.append(rest_.first(size));
            rest_ = rest_.subspan(size);
            count += size;
        }
        return {};
    }

private:
    platform::ByteView rest_;
    std::size_t fragmentSize_;
};

struct ReadBody {
    QByteArray content;
    std::optional<ferrylane::StreamFailure> failure;
};

/// What a receiver makes of the body of an upload that comes in fragments.
[[nodiscard]] inline ReadBody readBody(const platform::SecretKey& key,
    const ferrylane::V4Transfer& transfer, const QByteArray& body, std::size_t fragmentSize)
{
    MemorySource source(platform::bytesOf(body), fragmentSize);
    ferrylane::StreamReader reader(transfer, key, source, {});
    ReadBody read;
    for (;;) {
        const ferrylane::StreamStep step = reader.next();
        if (const auto* const piece = std::get_if<platform::ByteView>(&step)) {
            read.content += platform::textViewOf(*piece);
            continue;
        }
        if (const auto* const why = std::get_if<ferrylane::StreamFailure>(&step))
            read.failure = *why;
        return read;
    }
}

} // namespace support
