#pragma once

#include <QLatin1StringView>

namespace ferrylane {

/// Why an upload stream is refused: the text that the peer gets as the body of its answer and that
/// the log and the user see.
struct StreamFailure {
    QLatin1StringView text;

    friend bool operator==(const StreamFailure& a, const StreamFailure& b)
    {
        return a.text == b.text;
    }
};

namespace failures {

// The chunked layer.
inline constexpr StreamFailure chunkHeaderTooLarge{
    QLatin1StringView("HTTP chunk header too large")};
inline constexpr StreamFailure badChunkHeader{QLatin1StringView("Bad HTTP chunk header")};
inline constexpr StreamFailure badChunkSize{QLatin1StringView("Bad HTTP chunk size")};
inline constexpr StreamFailure malformedChunk{QLatin1StringView("Malformed HTTP chunk")};
// The records.
inline constexpr StreamFailure bufferLimitExceeded{
    QLatin1StringView("Transfer buffer limit exceeded")};
inline constexpr StreamFailure recordOrderMismatch{QLatin1StringView("Record order mismatch")};
inline constexpr StreamFailure badRecordLength{QLatin1StringView("Bad encrypted record length")};
inline constexpr StreamFailure authenticationFailed{QLatin1StringView("Authentication failed")};
inline constexpr StreamFailure recordLengthMismatch{QLatin1StringView("Record length mismatch")};
inline constexpr StreamFailure dataAfterFinalRecord{QLatin1StringView("Data after final record")};
inline constexpr StreamFailure invalidFinalRecord{QLatin1StringView("Invalid final record")};
inline constexpr StreamFailure duplicateFinalRecord{QLatin1StringView("Duplicate final record")};
inline constexpr StreamFailure digestMismatch{QLatin1StringView("SHA-256 mismatch")};
inline constexpr StreamFailure declaredSizeMismatch{
    QLatin1StringView("Declared file size mismatch")};
// The end of the stream.
inline constexpr StreamFailure completionRecordMissing{
    QLatin1StringView("Authenticated completion record missing")};
inline constexpr StreamFailure trailingData{
    QLatin1StringView("Trailing or incomplete encrypted data")};
inline constexpr StreamFailure closedBeforeLastChunk{
    QLatin1StringView("Connection closed before final HTTP chunk")};

} // namespace failures

} // namespace ferrylane
