#include "core/Base64Url.h"

namespace ferrylane {

std::optional<QByteArray> base64URLDecode(QStringView text)
{
    // Characters beyond Latin-1 become question marks, which no base64 has.
    QByteArray base64 = text.toLatin1().replace('-', '+').replace('_', '/');
    while (base64.size() % 4 != 0) {
        base64 += '=';
    }
    auto result = QByteArray::fromBase64Encoding(
        std::move(base64), QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!result) return std::nullopt;
    return std::move(result.decoded);
}

QString base64URLEncode(platform::ByteView bytes)
{
    // Without a copy, since they may be a key's.
    const auto raw = QByteArray::fromRawData(
        reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
    return QString::fromLatin1(
        raw.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace ferrylane
