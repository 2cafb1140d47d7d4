#pragma once

#include "platform/SecretKey.h"
#include "protocol/V4Stream.h"

#include <QByteArray>

#include <vector>

namespace support {

/// 32 bytes, the same in every run: 0, 1, 2, …
[[nodiscard]] platform::SecretKey testKey();

/// A transfer of a file "photo.jpg" whose declared size is `fileSize`.
[[nodiscard]] ferrylane::V4Transfer testTransfer(qint64 fileSize);

/// `size` bytes that look random and are the same in every run.
[[nodiscard]] QByteArray testContent(qsizetype size);

/// The sealed records of a file, the final one last.
[[nodiscard]] std::vector<QByteArray> sealedRecords(const platform::SecretKey& key,
    const ferrylane::V4Transfer& transfer, const QByteArray& content,
    qsizetype bytesPerRecord = static_cast<qsizetype>(ferrylane::maximumRecordPlaintext));

/// One chunk around `payload`.
[[nodiscard]] QByteArray chunk(const QByteArray& payload);

/// A whole chunked body, one record in each chunk.
[[nodiscard]] QByteArray chunkedBody(const std::vector<QByteArray>& records);

/// Head and body of a faultless upload.
[[nodiscard]] QByteArray uploadRequest(const platform::SecretKey& key,
    const ferrylane::V4Transfer& transfer, const QByteArray& content,
    const QString& senderName = QStringLiteral("Pixel 8"));

} // namespace support
