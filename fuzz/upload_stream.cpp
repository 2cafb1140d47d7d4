#include "fuzz/Target.h"
#include "support/MemorySource.h"
#include "support/UploadStream.h"

#include <cstdint>
#include <vector>

using namespace ferrylane;
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
std::optional<QByteArray> receive(const QByteArray& body, qint64 fileSize, std::size_t fragment)
{
    const auto read = support::readBody(knownKey(), transferOf(fileSize), body, fragment);
    require(read.content.size() <= body.size());
    return read.failure ? std::nullopt : std::optional(read.content);
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
QByteArray recordsOf(const QByteArray& content, std::size_t pieceBytes)
{
    QByteArray records;
    for (const QByteArray& record : support::sealedRecords(
             knownKey(), transferOf(content.size()), content, static_cast<qsizetype>(pieceBytes))) {
        records += record;
    }
    return records;
}

/// `records` in chunks of `chunkBytes`, however that cuts them.
QByteArray chunked(const QByteArray& records, std::size_t chunkBytes)
{
    std::vector<QByteArray> payloads;
    const auto step = static_cast<qsizetype>(chunkBytes);
    for (qsizetype start = 0; start < records.size(); start += step) {
        payloads.push_back(records.mid(start, step));
    }
    return support::chunkedBody(payloads);
}

/// A faultless stream is stored as it was, however it is cut; a changed one is refused, or the
/// change was without meaning (the case of a hexadecimal digit) and it is stored as it was.
void sealAndChange(Input input)
{
    const std::size_t pieceBytes = 1 + input.number();
    const std::size_t chunkBytes = 1 + input.number();
    const std::size_t fragment = 1 + input.number();
    const std::size_t position = input.number() * 256 + input.number();
    const auto change = static_cast<int>(input.number());
    const QByteArray content = platform::toByteArray(input.rest());

    QByteArray body = chunked(recordsOf(content, pieceBytes), chunkBytes);
    const auto stored = receive(body, content.size(), fragment);
    require(stored && *stored == content);

    char& changed = body[static_cast<qsizetype>(position) % body.size()];
    changed = static_cast<char>(changed ^ change);
    const auto storedChanged = receive(body, content.size(), fragment);
    require(!storedChanged || *storedChanged == content);
}

/// Nothing is stored that was not sealed with the key.
void feedAsItIs(ByteView body)
{
    require(!receive(platform::toByteArray(body), -1, 13));
}

} // namespace

void check(const QByteArray& input)
{
    Input numbers(platform::bytesOf(input));
    if (numbers.number() % 2 == 0) {
        feedAsItIs(numbers.rest());
    } else {
        sealAndChange(numbers);
    }
}
