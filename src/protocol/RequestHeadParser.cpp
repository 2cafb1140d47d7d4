#include "protocol/RequestHeadParser.h"

#include "core/Encodings.h"
#include "core/Text.h"
#include "protocol/HttpAnswer.h"

#include <QStringList>

#include <algorithm>
#include <charconv>
#include <vector>

namespace ferrylane {

namespace {

constexpr QByteArrayView headEnd("\r\n\r\n");
constexpr QByteArrayView lineBreak("\r\n");

using Lines = std::vector<QByteArrayView>;

struct HeaderLine {
    QString name; ///< lower-case
    QByteArrayView value;
};

HttpAnswer refusal(QByteArrayView status, const char* body)
{
    return {status, QByteArray(body)};
}

/// Of a head that is UTF-8 as a whole, and so is between its ASCII characters.
QString textOf(QByteArrayView part)
{
    return decodeUtf8(part).value_or(QString());
}

Lines linesOf(QByteArrayView head)
{
    Lines lines;
    for (qsizetype end = head.indexOf(lineBreak); end >= 0; end = head.indexOf(lineBreak)) {
        lines.push_back(head.first(end));
        head = head.sliced(end + lineBreak.size());
    }
    lines.push_back(head);
    return lines;
}

/// Words between spaces, as many as there are, none of them empty; the third and later are left
/// out.
void readRequestLine(QByteArrayView line, RequestHead& head)
{
    const QStringList words = textOf(line).split(u' ', Qt::SkipEmptyParts);
    if (!words.isEmpty()) head.method = words[0];
    if (words.size() > 1) head.target = words[1];
}

/// None for a line that has no name and value. Colons at the start are skipped, so that a name is
/// never empty.
std::optional<HeaderLine> headerLine(QByteArrayView line)
{
    while (line.startsWith(':')) {
        line = line.sliced(1);
    }
    const qsizetype colon = line.indexOf(':');
    if (colon < 0 || colon + 1 == line.size()) return std::nullopt;
    return HeaderLine{
        textOf(line.first(colon)).toLower(), withoutOuterBlanks(line.sliced(colon + 1))};
}

/// -1 for anything but a decimal number that fits 64 bits.
qint64 fileSize(QByteArrayView text)
{
    // from_chars takes a minus sign, and not the plus sign that is allowed here.
    const bool plus = text.startsWith('+');
    if (plus) text = text.sliced(1);
    if (text.isEmpty() || (plus && text.front() == '-')) return -1;
    qint64 size = -1;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), size);
    return error == std::errc() && end == text.end() ? size : -1;
}

/// False when the name breaks a limit.
bool readFileName(const QString& value, RequestHead& head)
{
    if (longerThan(value, maximumFileNameCharacters) || value.contains(u'\r')
        || value.contains(u'\n')) {
        return false;
    }
    head.fileName = percentDecode(value).value_or(head.fileName);
    return true;
}

/// Takes over what a header says; of a header that comes twice the later value wins. False when the
/// file name breaks a limit.
bool readHeader(const HeaderLine& line, RequestHead& head)
{
    const QString value = textOf(line.value);
    if (line.name == u"x-filename") return readFileName(value, head);

    if (line.name == u"transfer-encoding") {
        head.chunked = head.chunked || value.toLower().contains(u"chunked");
    } else if (line.name == u"x-ferrylane-file-size") {
        head.declaredFileSize = fileSize(line.value);
    } else if (line.name == u"x-ferrylane-transfer-id") {
        head.transferId = value;
    } else if (line.name == u"x-ferrylane-nonce-prefix") {
        head.noncePrefix = value;
    } else if (line.name == u"x-ferrylane-challenge") {
        head.challenge = value;
    } else if (line.name == u"x-ferrylane-sender-name") {
        head.senderName = percentDecode(value).value_or(value);
    }
    return true;
}

std::variant<RequestHead, HttpAnswer> readHead(QByteArrayView text)
{
    if (text.size() > static_cast<qsizetype>(maximumHeadBytes) || !text.isValidUtf8()) {
        return refusal(statuses::badRequest, "Invalid headers");
    }
    const Lines lines = linesOf(text);
    if (lines.size() > static_cast<std::size_t>(maximumHeadLines)) {
        return refusal(statuses::headerFieldsTooLarge, "Too many headers");
    }

    RequestHead head;
    readRequestLine(lines.front(), head);
    if (longerThan(head.target, maximumTargetCharacters)) {
        return refusal(statuses::uriTooLong, "URI too long");
    }
    for (auto line = lines.begin() + 1; line != lines.end(); ++line) {
        const auto header = headerLine(*line);
        if (header && !readHeader(*header, head)) {
            return refusal(statuses::badRequest, "Invalid filename");
        }
    }
    return head;
}

} // namespace

RequestHeadParser::Result RequestHeadParser::parse(platform::ByteView received)
{
    const QByteArrayView text = platform::textViewOf(received);
    const qsizetype end = text.indexOf(headEnd, searched_);
    if (end < 0) {
        if (received.size() > maximumHeadBytes) {
            return refusal(statuses::headerFieldsTooLarge, "Headers too large");
        }
        // The end may have begun to arrive.
        searched_ = std::max<qsizetype>(0, text.size() - headEnd.size() + 1);
        return NeedMore{};
    }

    auto head = readHead(text.first(end));
    if (auto* const answer = std::get_if<HttpAnswer>(&head)) return std::move(*answer);
    return Complete{
        std::get<RequestHead>(std::move(head)), static_cast<std::size_t>(end + headEnd.size())};
}

} // namespace ferrylane
