#include "core/Encodings.h"

#include "core/Text.h"

#include <charconv>

namespace ferrylane {

namespace {

/// The value of the two digits that begin `text`.
std::optional<char> escapedByte(QByteArrayView text)
{
    if (text.size() < 2) return std::nullopt;
    unsigned value = 0;
    const char* const end = text.data() + 2;
    const auto result = std::from_chars(text.data(), end, value, 16);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return static_cast<char>(value);
}

std::optional<QByteArray> unescaped(const QByteArray& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        const auto byte = escapedByte(QByteArrayView(text).sliced(i + 1));
        if (!byte) return std::nullopt;
        bytes += *byte;
        i += 2;
    }
    return bytes;
}

bool staysInFileName(char32_t c)
{
    if (c < 0x80) return QStringView(u"-._~").contains(QChar(c)) || QChar::isLetterOrNumber(c);
    return QChar::isLetterOrNumber(c) || QChar::isMark(c);
}

} // namespace

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

std::optional<QString> percentDecode(QStringView text)
{
    // A lone surrogate has no UTF-8.
    if (!text.isValidUtf16()) return std::nullopt;
    const auto bytes = unescaped(text.toUtf8());
    return bytes ? decodeUtf8(*bytes) : std::nullopt;
}

QString percentEncodeForQuery(QStringView text)
{
    // Letters, digits and -._~ stay in any case.
    return QString::fromLatin1(text.toUtf8().toPercentEncoding("!$&'()*+,/:;=?@"));
}

QString percentEncodeFileName(QStringView name)
{
    QString encoded;
    encoded.reserve(name.size());
    for (const char32_t c : name.toUcs4()) {
        // Unlike a string made of the code point, this keeps a byte order mark.
        const auto units = QChar::fromUcs4(c);
        const QStringView character = units;
        if (staysInFileName(c)) {
            encoded += character;
        } else {
            encoded += QString::fromLatin1(character.toUtf8().toPercentEncoding());
        }
    }
    return encoded;
}

QByteArray compactJson(const QJsonDocument& document)
{
    return document.toJson(QJsonDocument::Compact).replace("\"\xEF\xBB\xBF", "\"\\ufeff");
}

} // namespace ferrylane
