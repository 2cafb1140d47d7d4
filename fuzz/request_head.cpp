#include "fuzz/Target.h"
#include "protocol/RequestHeadParser.h"
#include "protocol/Routing.h"

#include "core/Text.h"

#include <cstdint>

using namespace ferrylane;

namespace {

/// What the parser says, fed `step` bytes more each time.
RequestHeadParser::Result parse(platform::ByteView bytes, std::size_t step)
{
    RequestHeadParser parser;
    RequestHeadParser::Result result = RequestHeadParser::NeedMore{};
    for (std::size_t end = 0; end < bytes.size();) {
        end = std::min(bytes.size(), end + step);
        result = parser.parse(bytes.first(end));
        if (!std::holds_alternative<RequestHeadParser::NeedMore>(result)) break;
    }
    return result;
}

void checkHead(const RequestHeadParser::Complete& complete, platform::ByteView bytes)
{
    require(complete.length >= 4 && complete.length <= bytes.size());
    require(complete.length - 4 <= maximumHeadBytes);
    const QByteArrayView end = platform::textViewOf(bytes.subspan(complete.length - 4, 4));
    require(end == QByteArrayView("\r\n\r\n"));
    require(characterCount(complete.head.target) <= maximumTargetCharacters);
    // Routing must cope with whatever the parser lets through.
    const Route result = route(complete.head);
    if (const auto* const upload = std::get_if<routes::Upload>(&result)) {
        require(complete.head.chunked && complete.head.method == u"POST");
        if (upload->transfer) require(characterCount(upload->transfer->id) >= 16);
    }
}

} // namespace

/// However the bytes are cut, a head that is within its limits reads the same.
void check(const QByteArray& input)
{
    const platform::ByteView bytes = platform::bytesOf(input);
    const auto whole = parse(bytes, SIZE_MAX / 2);
    if (const auto* const complete = std::get_if<RequestHeadParser::Complete>(&whole)) {
        checkHead(*complete, bytes);
    }
    if (bytes.size() > 4096) return;
    const auto cut = parse(bytes, 1);
    require(whole.index() == cut.index());
    if (const auto* const complete = std::get_if<RequestHeadParser::Complete>(&whole)) {
        const auto& other = std::get<RequestHeadParser::Complete>(cut);
        require(complete->length == other.length);
        require(complete->head.target == other.head.target);
        require(complete->head.fileName == other.head.fileName);
        require(complete->head.declaredFileSize == other.head.declaredFileSize);
    }
}
