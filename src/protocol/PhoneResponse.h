#pragma once

#include "platform/Bytes.h"

#include <QString>

#include <optional>

namespace ferrylane {

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
