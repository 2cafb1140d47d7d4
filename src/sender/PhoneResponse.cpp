#include "sender/PhoneResponse.h"

#include <QStringDecoder>
#include <QStringList>

namespace ferrylane {

namespace {

QString textOf(platform::ByteView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(platform::textViewOf(bytes));
    return decoder.hasError() ? QString() : text;
}

std::optional<int> statusOf(const QString& statusLine)
{
    const QStringList pieces = statusLine.split(u' ', Qt::SkipEmptyParts);
    if (pieces.size() < 2) return std::nullopt;
    bool isNumber = false;
    const int status = pieces[1].toInt(&isNumber);
    return isNumber ? std::optional(status) : std::nullopt;
}

} // namespace

std::optional<PhoneResponse> parsePhoneResponse(platform::ByteView received)
{
    const QString text = textOf(received);
    const auto status = statusOf(text.section(QStringLiteral("\r\n"), 0, 0));
    if (!status) return std::nullopt;
    return PhoneResponse{*status, text.section(QStringLiteral("\r\n\r\n"), 1).trimmed()};
}

} // namespace ferrylane
