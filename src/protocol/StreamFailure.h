#pragma once

#include <QLatin1StringView>
#include <QString>

#include <system_error>
#include <utility>

namespace ferrylane {

/// Why an upload stream is refused: the text that the peer gets as the body of its answer and that
/// the log and the user see.
struct StreamFailure {
    // NOLINTNEXTLINE(*-explicit-*): each text below is a failure
    StreamFailure(QLatin1StringView reason) : text(reason) {}
    explicit StreamFailure(QString reason) : text(std::move(reason)) {}

    QString text;

    bool operator==(const StreamFailure&) const = default;
};

namespace failures {

// The chunked layer.
inline constexpr QLatin1StringView chunkHeaderTooLarge{"HTTP chunk header too large"};
inline constexpr QLatin1StringView badChunkHeader{"Bad HTTP chunk header"};
inline constexpr QLatin1StringView badChunkSize{"Bad HTTP chunk size"};
inline constexpr QLatin1StringView malformedChunk{"Malformed HTTP chunk"};
// The records.
inline constexpr QLatin1StringView bufferLimitExceeded{"Transfer buffer limit exceeded"};
inline constexpr QLatin1StringView recordOrderMismatch{"Record order mismatch"};
inline constexpr QLatin1StringView badRecordLength{"Bad encrypted record length"};
inline constexpr QLatin1StringView authenticationFailed{"Authentication failed"};
inline constexpr QLatin1StringView recordLengthMismatch{"Record length mismatch"};
inline constexpr QLatin1StringView dataAfterFinalRecord{"Data after final record"};
inline constexpr QLatin1StringView invalidFinalRecord{"Invalid final record"};
inline constexpr QLatin1StringView duplicateFinalRecord{"Duplicate final record"};
inline constexpr QLatin1StringView digestMismatch{"SHA-256 mismatch"};
inline constexpr QLatin1StringView declaredSizeMismatch{"Declared file size mismatch"};
// The end of the stream.
inline constexpr QLatin1StringView completionRecordMissing{
    "Authenticated completion record missing"};
inline constexpr QLatin1StringView trailingData{"Trailing or incomplete encrypted data"};
inline constexpr QLatin1StringView closedBeforeLastChunk{
    "Connection closed before final HTTP chunk"};

/// The connection has failed.
[[nodiscard]] inline StreamFailure connectionError(const std::error_code& error)
{
    return StreamFailure(
        QStringLiteral("Connection error: ") + QString::fromStdString(error.message()));
}

} // namespace failures

} // namespace ferrylane
