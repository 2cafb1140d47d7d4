#include "fuzz/Target.h"
#include "pairing/PairedTargets.h"

using namespace ferrylane;

namespace {

/// What is written can be read, and is then the same.
void checkWriting(const QList<FerrylanePairedTarget>& targets)
{
    require(parsePairedTargetsJson(pairedTargetsJson(targets)) == targets);
}

/// A list of one is that one between brackets.
void checkOne(const QByteArray& json)
{
    const auto target = parsePairedTargetJson(json);
    if (!target) return;
    const auto list = parsePairedTargetsJson('[' + json + ']');
    require(list && *list == QList{*target});
    checkWriting(*list);
}

void checkReading(const QByteArray& json)
{
    checkOne(json);
    const auto targets = parsePairedTargetsJson(json);
    if (!targets) return;
    require(targets->size() <= json.size());
    checkWriting(*targets);
}

} // namespace

void check(const QByteArray& input)
{
    checkReading(input);
    const QString text = QString::fromUtf8(input);
    checkWriting({{text, QStringLiteral("http://10.0.0.7:8787"), text.section(u'/', 1)}, {}});
}
