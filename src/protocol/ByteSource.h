#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Interface.h"

#include <system_error>

namespace ferrylane {

/// Where the bytes of a stream come from.
class ByteSource : public platform::Interface {
public:
    struct Read {
        bool isEnd = false;    ///< nothing came, and nothing will
        std::error_code error; ///< why nothing will
    };

    /// Waits until `wanted` bytes (at least 1) have come, or the end or an error, and appends what
    /// is there to `buffer`, `maximum` bytes at most.
    [[nodiscard]] virtual Read read(
        platform::ByteBuffer& buffer, std::size_t wanted, std::size_t maximum)
        = 0;
};

} // namespace ferrylane
