#include "protocol/Routing.h"

#include "core/Encodings.h"
#include "core/Text.h"
#include "protocol/LandingPage.h"

#include <algorithm>
#include <array>

namespace ferrylane {

namespace {

constexpr qsizetype shortestTransferId = 16;
constexpr qsizetype longestTransferId = 128;

constexpr std::array<QStringView, 4> olderUploadTargets
    = {u"/upload", u"/secure-upload", u"/secure-upload-v2", u"/secure-upload-v3"};

bool isTransferId(const std::optional<QString>& id)
{
    // A line feed would make two pairs of id and file name the same in the associated data.
    const auto isControl = [](QChar c) { return c.category() == QChar::Other_Control; };
    if (!id || std::any_of(id->begin(), id->end(), isControl)) return false;
    const qsizetype length = characterCount(*id);
    return length >= shortestTransferId && length <= longestTransferId;
}

std::optional<NoncePrefix> noncePrefix(const std::optional<QString>& text)
{
    const auto bytes = text ? base64URLDecode(*text) : std::nullopt;
    if (!bytes || bytes->size() != static_cast<qsizetype>(noncePrefixBytes)) return std::nullopt;
    NoncePrefix prefix{};
    platform::copyBytes(platform::bytesOf(*bytes), prefix);
    return prefix;
}

std::optional<V4Transfer> transfer(const RequestHead& head)
{
    const auto prefix = noncePrefix(head.noncePrefix);
    if (!isTransferId(head.transferId) || !prefix) return std::nullopt;
    return V4Transfer{*head.transferId, head.fileName, head.declaredFileSize, *prefix};
}

Route routeGet(const RequestHead& head)
{
    if (head.target == u"/transfer-status") return routes::Readiness{};
    if (head.target == u"/secure-identify") return routes::Identify{head.challenge};
    if (head.target.startsWith(u'/')) return landingPage();
    return HttpAnswer{statuses::notFound, "Not found"};
}

Route routePost(const RequestHead& head)
{
    if (head.target == u"/secure-upload-v4" && head.chunked) {
        return routes::Upload{transfer(head), head.senderName};
    }
    if (std::find(olderUploadTargets.begin(), olderUploadTargets.end(), head.target)
        != olderUploadTargets.end()) {
        return HttpAnswer{statuses::upgradeRequired,
            "Legacy transfer route disabled; Ferrylane protocol v4 required"};
    }
    return HttpAnswer{statuses::notFound, "Not found"};
}

} // namespace

Route route(const RequestHead& head)
{
    if (head.method == u"GET") return routeGet(head);
    if (head.method == u"POST") return routePost(head);
    return HttpAnswer{statuses::notFound, "Not found"};
}

} // namespace ferrylane
