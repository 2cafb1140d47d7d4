#include "fuzz/Require.h"
#include "transferlog/TransferLogJson.h"

using namespace ferrylane;

namespace {

/// What is written can be read, and is then the same.
void checkWriting(const QList<FerrylaneTransferLogEntry>& entries)
{
    require(parseTransferLogJson(transferLogJson(entries)) == entries);
}

void checkReading(const QByteArray& json)
{
    const auto entries = parseTransferLogJson(json);
    if (!entries) return;
    require(entries->size() <= json.size());
    for (const auto& entry : *entries) {
        require(entry.date.isValid());
    }
    checkWriting(*entries);
}

/// The log's own entry, with any text for a name. Its date is one that a clock may show.
void checkOwn(const QString& text, qint64 number)
{
    checkWriting({{QDateTime::fromMSecsSinceEpoch(number % 4'000'000'000'000),
        QStringLiteral("Received"), text, text, text.section(u'/', 1), number}});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    checkReading(bytes);
    checkOwn(QString::fromUtf8(bytes), static_cast<qint64>(size) << (size % 40));
    return 0;
}
