#pragma once

#include "protocol/ByteSource.h"

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

} // namespace support
