#include "core/Encodings.h"
#include "core/Text.h"
#include "fuzz/Target.h"
#include "protocol/PairingLink.h"

namespace {

QString percentEncoded(const QString& text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding());
}

/// What is accepted has a name, a key and an address, and a code made of them says the same.
void checkPhonesCode(const QString& text)
{
    const auto target = ferrylane::parseFerrylanePairingQR(text);
    if (!target) return;
    require(!target->name.isEmpty() && !ferrylane::longerThan(target->name, 80));
    require(target->baseURL.startsWith(u"http://") && target->baseURL.endsWith(u":8787"));
    require(ferrylane::base64URLDecode(target->keyB64).value_or(QByteArray()).size() == 32);

    const auto again = ferrylane::parseFerrylanePairingQR(target->baseURL
        + QStringLiteral("/?name=x%20") + percentEncoded(target->name) + QStringLiteral("&flkey=")
        + percentEncoded(target->keyB64));
    require(again && again->baseURL == target->baseURL && again->keyB64 == target->keyB64);
    // The blank keeps a name that begins with "fl " from losing that again.
    const QString name = QStringLiteral("x ") + target->name;
    require(again->name == ferrylane::firstCharacters(name.trimmed(), 80));
}

/// A link made of what was read of one says the same.
void checkAnyLink(const QString& text)
{
    const auto url = ferrylane::parsePairingUrl(text);
    if (!url) return;
    const auto again = ferrylane::parsePairingUrl(
        ferrylane::ferrylanePairingLink(url->host, url->port, percentEncoded(url->keyText))
        + QStringLiteral("&name=") + percentEncoded(url->name));
    require(again && again->host == url->host && again->port == url->port);
    require(again->keyText == url->keyText && again->name == url->name);
}

/// This computer's link is read back whatever its name is.
void checkOwnLink(const QString& name)
{
    const QString key(43, u'A');
    const auto link = ferrylane::parsePairingUrl(
        ferrylane::ferrylanePairingLink(QStringLiteral("10.0.0.5"), 8788, key, name));
    // An ampersand may stand in a query as it is, and there it ends the name.
    require(link && link->keyText == key && link->port == 8788);
    require(link->name == name.section(u'&', 0, 0));
}

} // namespace

void check(const QByteArray& input)
{
    const QString text = QString::fromUtf8(input);
    checkPhonesCode(text);
    checkAnyLink(text);
    checkOwnLink(text);
}
