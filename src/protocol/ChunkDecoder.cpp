#include "protocol/ChunkDecoder.h"

#include "protocol/Blanks.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace ferrylane {

using platform::ByteBuffer;

namespace {

constexpr QByteArrayView lineBreak("\r\n");

ChunkDecoder::Step failed(StreamFailure failure)
{
    return {ChunkDecoder::Outcome::failed, {}, failure};
}

bool isAscii(QByteArrayView text)
{
    return std::all_of(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The size that a chunk-size line gives: hexadecimal digits before a ";", blanks around them.
std::optional<std::size_t> chunkSize(QByteArrayView line)
{
    const qsizetype extension = line.indexOf(';');
    const QByteArrayView digits = withoutOuterBlanks(extension < 0 ? line : line.first(extension));
    std::size_t size = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), size, 16);
    if (digits.isEmpty() || error != std::errc() || end != digits.end()) return std::nullopt;
    if (size > maximumChunkBytes) return std::nullopt;
    return size;
}

} // namespace

ChunkDecoder::Step ChunkDecoder::next(ByteBuffer& body)
{
    if (!pendingChunkSize_) {
        if (const auto step = readSizeLine(body)) return *step;
    }
    return readPayload(body);
}

std::size_t ChunkDecoder::missingBytes(const ByteBuffer& body) const
{
    const std::size_t needed
        = pendingChunkSize_ ? *pendingChunkSize_ + static_cast<std::size_t>(lineBreak.size()) : 0;
    return needed - std::min(needed, body.size());
}

std::optional<ChunkDecoder::Step> ChunkDecoder::readSizeLine(ByteBuffer& body)
{
    const QByteArrayView unread = platform::textViewOf(body.unread());
    const qsizetype lineLength = unread.indexOf(lineBreak);
    if (lineLength < 0) {
        if (body.size() > maximumChunkSizeLine) return failed(failures::chunkHeaderTooLarge);
        return Step{Outcome::needMore};
    }

    const QByteArrayView line = unread.first(lineLength);
    if (!isAscii(line)) return failed(failures::badChunkHeader);
    const auto size = chunkSize(line);
    if (!size) return failed(failures::badChunkSize);

    body.consume(static_cast<std::size_t>(lineLength + lineBreak.size()));
    if (*size == 0) return Step{Outcome::lastChunk};
    pendingChunkSize_ = size;
    return std::nullopt;
}

ChunkDecoder::Step ChunkDecoder::readPayload(ByteBuffer& body)
{
    if (missingBytes(body) > 0) return {Outcome::needMore};

    const platform::ByteView unread = body.unread();
    const std::size_t size = *std::exchange(pendingChunkSize_, std::nullopt);
    const auto end = unread.subspan(size, static_cast<std::size_t>(lineBreak.size()));
    if (platform::textViewOf(end) != lineBreak) return failed(failures::malformedChunk);

    body.consume(size + end.size());
    return {Outcome::chunk, unread.first(size)};
}

} // namespace ferrylane
