#pragma once

#include "platform/Crypto.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

/// The version 4 upload stream, as both directions use it: how one file becomes a request head and
/// a chunked body of AES-256-GCM records. docs/protocol.md describes it byte by byte.
namespace ferrylane {

/// A record is a head of 8 bytes (plaintext length and index, each 32-bit big-endian), the
/// ciphertext and a 16-byte tag.
constexpr std::size_t recordHeadBytes = 8;
constexpr std::size_t recordOverheadBytes = recordHeadBytes + platform::gcmTagBytes;
/// Longest plaintext of a data record; the shortest is 1 byte.
constexpr std::size_t maximumRecordPlaintext = 1048576;

/// The index that marks the final record, whose plaintext is the file's SHA-256 digest.
constexpr std::uint32_t finalRecordIndex = 0xFFFFFFFF;
constexpr std::size_t finalRecordBytes = recordOverheadBytes + platform::sha256Bytes;

constexpr std::size_t noncePrefixBytes = 8;
using NoncePrefix = std::array<std::byte, noncePrefixBytes>;

/// What the request head says of a transfer, and every record's associated data binds it to.
struct V4Transfer {
    QString id;                ///< 16 to 128 characters; a sender makes a new UUID for every file
    QString fileName;          ///< before percent-encoding
    qint64 fileSize = -1;      ///< bytes; -1 where the head gave no usable size
    NoncePrefix noncePrefix{}; ///< random, new for every file: the key stays the same
};

/// The 12-byte nonce of a record: the prefix and the index as 32-bit big-endian.
[[nodiscard]] platform::GcmNonce makeNonce(const NoncePrefix& prefix, std::uint32_t index);

[[nodiscard]] QByteArray dataRecordAssociatedData(
    const V4Transfer& transfer, std::uint32_t index, std::size_t plaintextBytes);
[[nodiscard]] QByteArray finalRecordAssociatedData(
    const V4Transfer& transfer, std::uint32_t recordCount, quint64 totalBytes);

/// The request head of an upload, with the empty line that ends it. `host` stands in the Host
/// header as it is, so an IPv6 literal comes with its brackets.
[[nodiscard]] QByteArray uploadRequestHead(const V4Transfer& transfer, const QString& host,
    std::uint16_t hostPort, const QString& senderName);

} // namespace ferrylane
