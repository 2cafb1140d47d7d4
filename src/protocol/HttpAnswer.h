#pragma once

#include "platform/Bytes.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace ferrylane {

/// Without the spaces and tabs at both ends: HTTP's optional white space (RFC 9110, section 5.6.3).
[[nodiscard]] inline QByteArrayView withoutOuterBlanks(QByteArrayView text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.isEmpty() && isBlank(text.front())) {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && isBlank(text.back())) {
        text.chop(1);
    }
    return text;
}

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

/// Longest answer of a phone that is read, in bytes: head and body.
constexpr std::size_t maximumPhoneResponse = 65536;

/// What a sender needs of a phone's HTTP answer.
struct PhoneResponse {
    int status = 0;
    QString body; ///< without white space at its ends

    [[nodiscard]] bool isSuccess() const { return status >= 200 && status <= 299; }
};

/// Reads an answer that has ended. None when its first line has no number in second place, or when
/// it is not UTF-8.
[[nodiscard]] std::optional<PhoneResponse> parsePhoneResponse(platform::ByteView received);

} // namespace ferrylane
