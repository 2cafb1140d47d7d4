#include "protocol/StreamReader.h"

#include "protocol/HttpAnswer.h"

#include <algorithm>
#include <charconv>

namespace ferrylane {

using platform::ByteView;
using platform::MutableByteView;

namespace {

constexpr QByteArrayView chunkLineBreak("\r\n");
constexpr std::size_t lineBreakBytes = 2;
/// Most bytes asked of the source at once.
constexpr std::size_t maximumReceive = 1048576;
// Asked for beyond the end of the chunk that is under way. Little, so that of a long chunk that
// follows only a little has to be moved to another buffer; enough for many short ones.
constexpr std::size_t readAhead = 65536;

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

StreamReader::StreamReader(V4Transfer transfer, const platform::SecretKey& key, ByteSource& source,
    platform::ByteBuffer received)
    : transfer_(std::move(transfer)), cipher_(key), source_(source), body_(std::move(received))
{
}

StreamStep StreamReader::next()
{
    for (;;) {
        const auto taken = takeRecord();
        if (const auto* const failure = std::get_if<StreamFailure>(&taken)) return *failure;
        const auto& record = std::get<std::optional<Record>>(taken);
        if (record && record->index != finalRecordIndex) return openDataRecord(*record);
        if (record) {
            if (const auto failure = openFinalRecord(*record)) return *failure;
        } else if (isLastChunk_) {
            return end();
        } else if (const auto failure = readChunk()) {
            return *failure;
        }
    }
}

std::optional<StreamFailure> StreamReader::readChunk()
{
    const auto size = readChunkSize();
    if (const auto* const failure = std::get_if<StreamFailure>(&size)) return *failure;
    const std::size_t bytes = std::get<std::size_t>(size);
    isLastChunk_ = bytes == 0;
    if (isLastChunk_) return std::nullopt;

    const std::size_t needed = bytes + lineBreakBytes;
    while (body_.size() < needed) {
        if (auto failure = receive(needed - body_.size())) return failure;
    }
    const ByteView end = body_.unread().subspan(bytes, lineBreakBytes);
    if (platform::textViewOf(end) != chunkLineBreak) return failures::malformedChunk;
    contentBytes_ = bytes;
    return std::nullopt;
}

StreamReader::OrFailure<std::size_t> StreamReader::readChunkSize()
{
    for (;;) {
        const QByteArrayView unread = platform::textViewOf(body_.unread());
        const qsizetype lineLength = unread.indexOf(chunkLineBreak);
        if (lineLength >= 0) {
            const QByteArrayView line = unread.first(lineLength);
            if (!isAscii(line)) return failures::badChunkHeader;
            const auto size = chunkSize(line);
            if (!size) return failures::badChunkSize;
            body_.consume(static_cast<std::size_t>(lineLength) + lineBreakBytes);
            return *size;
        }
        if (body_.size() > maximumChunkSizeLine) return failures::chunkHeaderTooLarge;
        if (const auto failure = receive(1)) return *failure;
    }
}

std::optional<StreamFailure> StreamReader::receive(std::size_t missing)
{
    if (std::exchange(isBodyHashed_, false)) hash_.exchange(body_);
    const ByteSource::Read read = source_.read(
        body_, std::min(missing, maximumReceive), std::min(missing + readAhead, maximumReceive));
    if (read.error) return failures::connectionError(read.error);
    if (read.isEnd) return failures::closedBeforeLastChunk;
    return std::nullopt;
}

void StreamReader::consumeContent(std::size_t count)
{
    contentBytes_ -= count;
    body_.consume(contentBytes_ == 0 ? count + lineBreakBytes : count);
}

StreamReader::OrFailure<std::optional<StreamReader::Record>> StreamReader::takeRecord()
{
    // Senders put one record in each chunk, which is read where it lies. One that is split over
    // chunks is put together apart.
    if (split_.empty()) {
        auto taken = parseRecord(body_.unreadInPlace().first(contentBytes_));
        if (std::holds_alternative<StreamFailure>(taken)) return taken;
        if (const auto& record = std::get<std::optional<Record>>(taken)) {
            consumeContent(record->size());
            return taken;
        }
    }
    while (contentBytes_ > 0) {
        if (std::exchange(isSplitHashed_, false)) hash_.exchange(split_);
        const std::size_t count = std::min(contentBytes_, missingOfSplit());
        split_.append(body_.unread().first(count));
        consumeContent(count);
        auto taken = parseRecord(split_.unreadInPlace());
        if (std::holds_alternative<StreamFailure>(taken)) return taken;
        if (auto& record = std::get<std::optional<Record>>(taken)) {
            record->isSplit = true;
            split_.consume(record->size());
            return taken;
        }
    }
    return std::nullopt;
}

StreamReader::OrFailure<std::optional<StreamReader::Record>> StreamReader::parseRecord(
    MutableByteView bytes) const
{
    if (bytes.size() < recordHeadBytes) return std::nullopt;
    Record record{platform::readU32BigEndian(bytes), platform::readU32BigEndian(bytes.subspan(4))};
    if (const auto failure = check(record)) return *failure;
    if (bytes.size() < record.size()) return std::nullopt;
    record.sealed = bytes.subspan(recordHeadBytes, record.size() - recordHeadBytes);
    return record;
}

std::size_t StreamReader::missingOfSplit() const
{
    const ByteView begun = split_.unread();
    const std::size_t needed = begun.size() < recordHeadBytes
        ? recordHeadBytes
        : recordOverheadBytes + platform::readU32BigEndian(begun);
    return needed - begun.size();
}

std::optional<StreamFailure> StreamReader::check(const Record& record) const
{
    if (record.index == finalRecordIndex) {
        if (finalSeen_) return failures::duplicateFinalRecord;
        if (record.length != platform::sha256Bytes) return failures::invalidFinalRecord;
        return std::nullopt;
    }
    if (finalSeen_) return failures::dataAfterFinalRecord;
    if (record.index != expectedIndex_) return failures::recordOrderMismatch;
    if (record.length == 0 || record.length > maximumRecordPlaintext) {
        return failures::badRecordLength;
    }
    return std::nullopt;
}

StreamStep StreamReader::openDataRecord(const Record& record)
{
    const QByteArray associatedData
        = dataRecordAssociatedData(transfer_, record.index, record.length);
    const auto opened = cipher_.open(makeNonce(transfer_.noncePrefix, record.index),
        platform::bytesOf(associatedData), record.sealed, record.sealed);
    if (!opened) return failures::authenticationFailed;
    if (*opened != record.length) return failures::recordLengthMismatch;
    totalBytes_ += record.length;
    ++expectedIndex_;
    const ByteView plaintext = record.sealed.first(record.length);
    hash_.update(plaintext);
    (record.isSplit ? isSplitHashed_ : isBodyHashed_) = true;
    return plaintext;
}

std::optional<StreamFailure> StreamReader::openFinalRecord(const Record& record)
{
    const QByteArray associatedData
        = finalRecordAssociatedData(transfer_, expectedIndex_, totalBytes_);
    platform::Sha256Digest declared{};
    const auto opened = cipher_.open(makeNonce(transfer_.noncePrefix, finalRecordIndex),
        platform::bytesOf(associatedData), record.sealed, declared);
    if (!opened) return failures::authenticationFailed;
    if (!platform::equalInConstantTime(hash_.finish(), declared)) return failures::digestMismatch;
    if (transfer_.fileSize >= 0 && totalBytes_ != static_cast<quint64>(transfer_.fileSize)) {
        return failures::declaredSizeMismatch;
    }
    finalSeen_ = true;
    return std::nullopt;
}

StreamStep StreamReader::end() const
{
    if (!finalSeen_) return failures::completionRecordMissing;
    if (!split_.empty()) return failures::trailingData;
    return StreamEnd{totalBytes_};
}

} // namespace ferrylane
