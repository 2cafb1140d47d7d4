#include "protocol/HttpAnswer.h"

#include "core/Text.h"

#include <QStringList>

namespace ferrylane {

namespace {

std::optional<int> statusOf(const QString& statusLine)
{
    const QStringList pieces = statusLine.split(u' ', Qt::SkipEmptyParts);
    if (pieces.size() < 2) return std::nullopt;
    bool isNumber = false;
    const int status = pieces[1].toInt(&isNumber);
    return isNumber ? std::optional(status) : std::nullopt;
}

} // namespace

QByteArray HttpAnswer::toBytes() const
{
    QByteArray bytes("HTTP/1.1 ");
    bytes.append(status)
        .append("\r\nContent-Type: ")
        .append(contentType)
        .append("\r\nContent-Length: ")
        .append(QByteArray::number(body.size()))
        .append("\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n")
        .append(body);
    return bytes;
}

std::optional<PhoneResponse> parsePhoneResponse(platform::ByteView received)
{
    const QString text = decodeUtf8(platform::textViewOf(received)).value_or(QString());
    const auto status = statusOf(text.section(QStringLiteral("\r\n"), 0, 0));
    if (!status) return std::nullopt;
    return PhoneResponse{*status, text.section(QStringLiteral("\r\n\r\n"), 1).trimmed()};
}

} // namespace ferrylane
