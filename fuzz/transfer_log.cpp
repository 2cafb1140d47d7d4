#include "fuzz/Target.h"
#include "transferlog/TransferLog.h"

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

void check(const QByteArray& input)
{
    checkReading(input);
    checkOwn(QString::fromUtf8(input), input.size() << (input.size() % 40));
}
