#include "fuzz/Require.h"
#include "platform/ByteBuffer.h"
#include "protocol/StreamReader.h"
#include "protocol/V4Stream.h"
#include "support/MemorySource.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using namespace ferrylane;
using platform::ByteBuffer;
using platform::ByteView;

namespace {

const platform::SecretKey& knownKey()
{
    static const auto key = platform::SecretKey::fromBytes(std::vector(32, std::byte{7}));
    return *key;
}

V4Transfer transferOf(qint64 fileSize)
{
    return {QStringLiteral("0123456789abcdef"), QStringLiteral("name"), fileSize, {}};
}

/// The content that a receiver stores for `body`, or none when it refuses it.
std::optional<std::vector<std::byte>> receive(ByteView body, qint64 fileSize, std::size_t fragment)
{
    support::MemorySource source(body, fragment);
    StreamReader reader(transferOf(fileSize), knownKey(), source, {});
    std::vector<std::byte> content;
    for (;;) {
        const StreamStep step = reader.next();
        if (std::holds_alternative<StreamFailure>(step)) return std::nullopt;
        if (std::holds_alternative<StreamEnd>(step)) return content;
        const auto piece = std::get<ByteView>(step);
        content.insert(content.end(), piece.begin(), piece.end());
        require(content.size() <= body.size());
    }
}

/// The fuzzer's bytes as small numbers and a rest.
class Input {
public:
    explicit Input(ByteView bytes) : bytes_(bytes) {}

    std::size_t number()
    {
        if (bytes_.empty()) return 0;
        const auto value = std::to_integer<std::size_t>(bytes_.front());
        bytes_ = bytes_.subspan(1);
        return value;
    }
    [[nodiscard]] ByteView rest() const { return bytes_; }

private:
    ByteView bytes_;
};

/// The records of `content`, in pieces of `pieceBytes`.
ByteBuffer recordsOf(ByteView content, std::size_t pieceBytes)
{
    ByteBuffer records;
    RecordSealer sealer(knownKey(), transferOf(static_cast<qint64>(content.size())));
    platform::Sha256 sha256;
    sha256.update(content);
    for (std::size_t start = 0; start < content.size(); start += pieceBytes) {
        sealer.appendDataRecord(
            content.subspan(start, std::min(pieceBytes, content.size() - start)), records);
    }
    sealer.appendFinalRecord(sha256.finish(), records);
    return records;
}

/// `records` in chunks of `chunkBytes`, however that cuts them.
ByteBuffer chunked(ByteView records, std::size_t chunkBytes)
{
    ByteBuffer body;
    for (std::size_t start = 0; start < records.size(); start += chunkBytes) {
        const ByteView payload
            = records.subspan(start, std::min(chunkBytes, records.size() - start));
        appendChunkSizeLine(payload.size(), body);
        body.append(payload);
        appendChunkEnd(body);
    }
    appendLastChunk(body);
    return body;
}

/// A faultless stream is stored as it was, however it is cut; a changed one is refused, or the
/// change was without meaning (the case of a hexadecimal digit) and it is stored as it was.
void sealAndChange(Input input)
{
    const std::size_t pieceBytes = 1 + input.number();
    const std::size_t chunkBytes = 1 + input.number();
    const std::size_t fragment = 1 + input.number();
    const std::size_t position = input.number() * 256 + input.number();
    const auto change = static_cast<std::byte>(input.number());
    const std::vector<std::byte> content(input.rest().begin(), input.rest().end());
    const auto fileSize = static_cast<qint64>(content.size());

    const ByteBuffer body = chunked(recordsOf(content, pieceBytes).unread(), chunkBytes);
    const auto stored = receive(body.unread(), fileSize, fragment);
    require(stored && *stored == content);

    std::vector<std::byte> changed(body.unread().begin(), body.unread().end());
    changed[position % changed.size()] ^= change;
    const auto storedChanged = receive(changed, fileSize, fragment);
    require(!storedChanged || *storedChanged == content);
}

/// Nothing is stored that was not sealed with the key.
void feedAsItIs(ByteView body)
{
    require(!receive(body, -1, 13));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(std::as_bytes(std::span(data, size)));
    if (input.number() % 2 == 0) {
        feedAsItIs(input.rest());
    } else {
        sealAndChange(input);
    }
    return 0;
}
