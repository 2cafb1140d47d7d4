#pragma once

#include "platform/ByteBuffer.h"
#include "platform/SecretKey.h"

#include <QByteArray>
#include <QString>

namespace bench {

/// What the answer to an upload that has been stored ends with.
[[nodiscard]] QByteArray storedAnswer();

/// A whole upload, sealed and ready to be sent any number of times. It is in memory once.
class SealedUpload {
public:
    /// `size` bytes of content, a record of 1 MiB in each chunk.
    SealedUpload(const platform::SecretKey& key, const QString& fileName, qint64 size);

    [[nodiscard]] qint64 size() const { return size_; }
    /// Head and body. A view: valid as long as this object.
    [[nodiscard]] QByteArray request() const;

private:
    qint64 size_;
    platform::ByteBuffer request_;
};

} // namespace bench
