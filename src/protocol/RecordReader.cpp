#include "protocol/RecordReader.h"

namespace ferrylane {

using platform::ByteView;

RecordReader::RecordReader(V4Transfer transfer, platform::Aead& cipher, PlaintextSink& sink)
    : transfer_(std::move(transfer)), cipher_(cipher), sink_(sink)
{
}

std::optional<StreamFailure> RecordReader::feed(ByteView bytes)
{
    if (recordBuffer_.size() + bytes.size() > maximumUnreadRecordBytes) {
        return failures::bufferLimitExceeded;
    }
    // Senders put one record in each chunk. Reading it where it lies saves a copy of the whole
    // file.
    if (recordBuffer_.empty()) {
        const Reading reading = readRecords(bytes);
        if (!reading.failure) recordBuffer_.append(bytes.subspan(reading.consumed));
        return reading.failure;
    }
    recordBuffer_.append(bytes);
    const Reading reading = readRecords(recordBuffer_.unread());
    recordBuffer_.consume(reading.consumed);
    return reading.failure;
}

std::optional<StreamFailure> RecordReader::finish() const
{
    if (!finalSeen_) return failures::completionRecordMissing;
    if (!recordBuffer_.empty()) return failures::trailingData;
    return std::nullopt;
}

RecordReader::Reading RecordReader::readRecords(ByteView bytes)
{
    Reading reading;
    while (bytes.size() - reading.consumed >= recordHeadBytes) {
        const ByteView rest = bytes.subspan(reading.consumed);
        const Head head{
            platform::readU32BigEndian(rest), platform::readU32BigEndian(rest.subspan(4))};
        reading.failure = check(head);
        const std::size_t recordBytes = recordOverheadBytes + head.length;
        if (reading.failure || rest.size() < recordBytes) return reading;

        const ByteView sealed = rest.subspan(recordHeadBytes, recordBytes - recordHeadBytes);
        reading.failure = head.index == finalRecordIndex ? openFinalRecord(sealed)
                                                         : openDataRecord(head, sealed);
        if (reading.failure) return reading;
        reading.consumed += recordBytes;
    }
    return reading;
}

std::optional<StreamFailure> RecordReader::check(Head head) const
{
    if (head.index == finalRecordIndex) {
        if (finalSeen_) return failures::duplicateFinalRecord;
        if (head.length != platform::sha256Bytes) return failures::invalidFinalRecord;
        return std::nullopt;
    }
    if (finalSeen_) return failures::dataAfterFinalRecord;
    if (head.index != expectedIndex_) return failures::recordOrderMismatch;
    if (head.length == 0 || head.length > maximumRecordPlaintext) return failures::badRecordLength;
    return std::nullopt;
}

std::optional<StreamFailure> RecordReader::openDataRecord(Head head, ByteView sealed)
{
    const QByteArray associatedData = dataRecordAssociatedData(transfer_, head.index, head.length);
    const auto opened = cipher_.open(makeNonce(transfer_.noncePrefix, head.index),
        platform::bytesOf(associatedData), sealed, sink_.space(head.length));
    if (!opened) return failures::authenticationFailed;
    if (*opened != head.length) return failures::recordLengthMismatch;
    // Counted first: the sink reports how far the transfer is.
    totalBytes_ += head.length;
    ++expectedIndex_;
    if (!sink_.take(head.length)) return failures::authenticationFailed;
    return std::nullopt;
}

std::optional<StreamFailure> RecordReader::openFinalRecord(ByteView sealed)
{
    const QByteArray associatedData
        = finalRecordAssociatedData(transfer_, expectedIndex_, totalBytes_);
    platform::Sha256Digest declared{};
    const auto opened = cipher_.open(makeNonce(transfer_.noncePrefix, finalRecordIndex),
        platform::bytesOf(associatedData), sealed, declared);
    if (!opened) return failures::authenticationFailed;

    if (!platform::equalInConstantTime(sink_.digest(), declared)) return failures::digestMismatch;
    if (transfer_.fileSize >= 0 && totalBytes_ != static_cast<quint64>(transfer_.fileSize)) {
        return failures::declaredSizeMismatch;
    }
    finalSeen_ = true;
    return std::nullopt;
}

} // namespace ferrylane
