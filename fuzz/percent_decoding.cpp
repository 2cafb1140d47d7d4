#include "core/Encodings.h"
#include "fuzz/Target.h"

namespace {

/// What is decoded is text, and the bytes that a lenient decoder finds.
void checkDecoding(const QString& encoded)
{
    const auto text = ferrylane::percentDecode(encoded);
    if (!text) return;
    require(text->isValidUtf16());
    require(text->toUtf8() == QByteArray::fromPercentEncoding(encoded.toUtf8()));
}

void checkEncoding(const QString& text)
{
    const QString query = ferrylane::percentEncodeForQuery(text);
    require(ferrylane::percentDecode(query) == text);
    for (const QChar c : query) {
        require(c > u' ' && c < u'\x7f');
    }
    const QString fileName = ferrylane::percentEncodeFileName(text);
    require(ferrylane::percentDecode(fileName) == text);
    require(!fileName.contains(u'\r') && !fileName.contains(u'\n') && !fileName.contains(u'/'));
}

} // namespace

void check(const QByteArray& input)
{
    checkDecoding(QString::fromUtf8(input));
    checkEncoding(QString::fromUtf8(input));
}
