#include "phone/HttpResponse.h"

namespace ferrylane::phone {

namespace {

constexpr QByteArrayView versionPrefix("HTTP/1.1 ");
constexpr QByteArrayView endOfHead("\r\n\r\n");

bool readStatusLine(const QByteArray& line, HttpResponse& response)
{
    if (!line.startsWith(versionPrefix)) return false;
    response.statusText = line.sliced(versionPrefix.size());
    bool isNumber = false;
    response.status = response.statusText.first(std::min<qsizetype>(3, response.statusText.size()))
                          .toInt(&isNumber);
    return isNumber && response.status >= 100;
}

bool readHead(const QByteArray& head, HttpResponse& response)
{
    qsizetype lineStart = 0;
    while (lineStart < head.size()) {
        const qsizetype lineEnd = head.indexOf("\r\n", lineStart);
        const QByteArray line = head.mid(lineStart, lineEnd - lineStart);
        lineStart = lineEnd + 2;
        if (response.status == 0) {
            if (!readStatusLine(line, response)) return false;
            continue;
        }
        const qsizetype colon = line.indexOf(':');
        if (colon < 1) return false;
        response.headers.emplace_back(line.first(colon), line.sliced(colon + 1).trimmed());
    }
    return response.status != 0;
}

/// None when there is no length, or none that fits into an answer.
std::optional<qsizetype> contentLength(const HttpResponse& response)
{
    const auto text = response.header("content-length");
    if (!text) return std::nullopt;
    bool isNumber = false;
    const qlonglong length = text->toLongLong(&isNumber);
    if (!isNumber || length < 0 || length > qlonglong{maximumResponseBytes}) return std::nullopt;
    return length;
}

} // namespace

std::optional<QByteArray> HttpResponse::header(QByteArrayView name) const
{
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0) return value;
    }
    return std::nullopt;
}

ParsedResponse parseHttpResponse(platform::ByteView received)
{
    const QByteArrayView text = platform::textViewOf(received);
    const qsizetype headEnd = text.indexOf(endOfHead);
    if (headEnd < 0) {
        if (received.size() > maximumResponseBytes) return Malformed{};
        return NeedMore{};
    }
    HttpResponse response;
    // With the line break of the last line.
    if (!readHead(text.first(headEnd + 2).toByteArray(), response)) return Malformed{};
    const auto length = contentLength(response);
    if (!length) return Malformed{};
    const QByteArrayView body = text.sliced(headEnd + endOfHead.size());
    if (body.size() < *length) return NeedMore{};
    response.body = body.first(*length).toByteArray();
    return response;
}

} // namespace ferrylane::phone
