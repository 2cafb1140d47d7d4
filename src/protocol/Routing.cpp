#include "protocol/Routing.h"

#include "core/Encodings.h"
#include "core/Text.h"

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

HttpAnswer landingPage()
{
    // The phone application's makers rely on these bytes; the closing line has no line break.
    // clang-format off
    static constexpr char page[] = R"html(<!doctype html><meta name=viewport content='width=device-width,initial-scale=1'><title>Ferrylane</title>
<style>
body{font-family:-apple-system,BlinkMacSystemFont,Segoe UI,sans-serif;background:#f4f7fb;margin:0;padding:20px;color:#0e1420}
.c{max-width:680px;margin:8vh auto;background:white;border:1px solid #e2e6ed;border-radius:28px;padding:30px;box-shadow:0 8px 40px #0001}
h1{font-size:42px;margin:0 0 8px}.ok{color:#22c55e}.s{font-size:14px;color:#596273;margin-top:10px}
button{border:0;border-radius:14px;padding:15px 18px;font:600 17px system-ui;cursor:pointer;background:#1d6bff;color:white;margin-top:22px}
</style>
<div class=c>
  <h1>Ferrylane</h1>
  <div class=ok>● This Mac is ready</div>
  <div class=s>Secure native transfer uses Ferrylane protocol v4. Legacy plaintext and older transfer routes are disabled.</div>
  <button id=open>Open in Ferrylane</button>
  <div id=m class=s>QR pairing is a credential. Keep this page private.</div>
</div>
<script>
const qs=new URLSearchParams(location.search), keyB64=qs.get('flkey')||'';
const target=location.origin;
document.getElementById('open').onclick=()=>{
  if(!keyB64){document.getElementById('m').textContent='Invalid secure link';return}
  location.href='ferrylane://receive?url='+encodeURIComponent(target)+'&key='+encodeURIComponent(keyB64)
};
</script>)html";
    // clang-format on
    return {
        statuses::ok, QByteArray::fromRawData(page, sizeof page - 1), "text/html; charset=utf-8"};
}

Route route(const RequestHead& head)
{
    if (head.method == u"GET") return routeGet(head);
    if (head.method == u"POST") return routePost(head);
    return HttpAnswer{statuses::notFound, "Not found"};
}

} // namespace ferrylane
