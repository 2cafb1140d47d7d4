#include "protocol/StreamWriter.h"

#include <stdexcept>
#include <utility>

namespace ferrylane {

using platform::ByteBuffer;
using platform::ByteView;
using platform::MutableByteView;

StreamWriter::StreamWriter(V4Transfer transfer, const platform::SecretKey& key)
    : transfer_(std::move(transfer)), cipher_(key)
{
}

MutableByteView StreamWriter::room(std::size_t size)
{
    if (std::exchange(isPieceHashed_, false)) hash_.exchange(piece_);
    return piece_.prepare(size);
}

void StreamWriter::seal(std::size_t count, ByteBuffer& out)
{
    if (count == 0 || count > maximumRecordPlaintext) {
        throw std::length_error("a record of no or too many bytes");
    }
    if (isFull()) throw std::length_error("too many records");
    piece_.commit(count);
    const ByteView plaintext = piece_.unread();
    piece_.consume(count);
    hash_.update(plaintext);
    isPieceHashed_ = true;
    appendChunk(
        recordCount_, dataRecordAssociatedData(transfer_, recordCount_, count), plaintext, out);
    ++recordCount_;
    totalBytes_ += count;
}

void StreamWriter::write(ByteView piece, ByteBuffer& out)
{
    platform::copyBytes(piece, room(piece.size()));
    seal(piece.size(), out);
}

void StreamWriter::finish(ByteBuffer& out)
{
    const platform::Sha256Digest digest = hash_.finish();
    appendChunk(finalRecordIndex, finalRecordAssociatedData(transfer_, recordCount_, totalBytes_),
        digest, out);
    out.append(platform::bytesOf(QByteArrayLiteral("0\r\n\r\n")));
}

void StreamWriter::appendChunk(
    std::uint32_t index, const QByteArray& associatedData, ByteView plaintext, ByteBuffer& out)
{
    const std::size_t length = recordOverheadBytes + plaintext.size();
    const QByteArray sizeLine = QByteArray::number(static_cast<qulonglong>(length), 16) + "\r\n";
    // Room for all of it at once: a buffer that grows later copies what is in it.
    static_cast<void>(out.prepare(static_cast<std::size_t>(sizeLine.size()) + length + 2));
    out.append(platform::bytesOf(sizeLine));
    const MutableByteView record = out.prepare(length);
    platform::writeU32BigEndian(static_cast<std::uint32_t>(plaintext.size()), record);
    platform::writeU32BigEndian(index, record.subspan(4));
    cipher_.seal(makeNonce(transfer_.noncePrefix, index), platform::bytesOf(associatedData),
        plaintext, record.subspan(recordHeadBytes));
    out.commit(length);
    out.append(platform::bytesOf(QByteArrayLiteral("\r\n")));
}

} // namespace ferrylane
