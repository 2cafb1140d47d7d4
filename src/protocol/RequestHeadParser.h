#pragma once

#include "platform/Bytes.h"
#include "protocol/HttpAnswer.h"

#include <QString>

#include <optional>
#include <variant>

namespace ferrylane {

/// Longest request head in bytes, without the empty line that ends it.
constexpr std::size_t maximumHeadBytes = 65536;
/// Most lines of a head, the request line included.
constexpr qsizetype maximumHeadLines = 65;
/// Longest request target and X-Filename value, in user-perceived characters.
constexpr qsizetype maximumTargetCharacters = 4096;
constexpr qsizetype maximumFileNameCharacters = 4096;

/// What the service reads of a request head (RFC 9112).
struct RequestHead {
    QString method;
    QString target = QStringLiteral("/"); ///< path and query, not decoded
    bool chunked = false;
    qint64 declaredFileSize = -1;
    QString fileName = QStringLiteral("file");
    std::optional<QString> transferId;
    std::optional<QString> noncePrefix; ///< base64url, as sent
    std::optional<QString> challenge;   ///< base64url, as sent
    std::optional<QString> senderName;
};

/// Finds the end of a request head in the bytes that come in, and takes the head apart.
class RequestHeadParser {
public:
    struct NeedMore {};
    struct Complete {
        RequestHead head;
        std::size_t length = 0; ///< bytes of head and empty line; the body starts behind them
    };
    using Result = std::variant<NeedMore, Complete, HttpAnswer>;

    /// Given all bytes received so far, each time with more at their end. An answer is the refusal
    /// of a head that breaks a limit. The parser is not to be asked again after anything but
    /// NeedMore.
    [[nodiscard]] Result parse(platform::ByteView received);

private:
    /// Where the search for the end goes on: searching anew each time would cost the square of the
    /// head's length.
    qsizetype searched_ = 0;
};

} // namespace ferrylane
