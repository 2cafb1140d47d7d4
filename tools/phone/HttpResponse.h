#pragma once

#include "platform/Bytes.h"

#include <QByteArray>

#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace ferrylane::phone {

/// Longest answer that is waited for, in bytes: head and body.
constexpr std::size_t maximumResponseBytes = 65536;

/// An HTTP/1.1 answer (RFC 9112).
struct HttpResponse {
    int status = 0;
    QByteArray statusText; ///< code and reason phrase: "409 Conflict"
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;

    /// The first header of that name, in any case of letters.
    [[nodiscard]] std::optional<QByteArray> header(QByteArrayView name) const;
};

struct NeedMore {};
struct Malformed {};
using ParsedResponse = std::variant<NeedMore, Malformed, HttpResponse>;

/// Given all bytes received so far. The body's end is known by Content-Length only, which the
/// computer always sends; bytes behind the body are ignored.
[[nodiscard]] ParsedResponse parseHttpResponse(platform::ByteView received);

} // namespace ferrylane::phone
