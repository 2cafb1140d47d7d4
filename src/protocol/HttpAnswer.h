#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace ferrylane {

/// Status code and reason phrase, as they stand in a status line.
namespace statuses {

inline constexpr QByteArrayView ok("200 OK");
inline constexpr QByteArrayView badRequest("400 Bad Request");
inline constexpr QByteArrayView notFound("404 Not Found");
inline constexpr QByteArrayView conflict("409 Conflict");
inline constexpr QByteArrayView uriTooLong("414 URI Too Long");
inline constexpr QByteArrayView upgradeRequired("426 Upgrade Required");
inline constexpr QByteArrayView headerFieldsTooLarge("431 Request Header Fields Too Large");
inline constexpr QByteArrayView internalServerError("500 Internal Server Error");

} // namespace statuses

inline constexpr QByteArrayView plainText("text/plain");

/// One answer to a request, before it is put into bytes.
struct HttpAnswer {
    QByteArrayView status;
    QByteArray body;
    QByteArrayView contentType = plainText;

    /// The whole response. Its header order is part of the protocol.
    [[nodiscard]] QByteArray toBytes() const;
};

} // namespace ferrylane
