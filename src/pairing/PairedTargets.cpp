#include "pairing/PairedTargets.h"

#include "core/Log.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "pairing/DisplayName.h"
#include "pairing/PairedTargetJson.h"
#include "platform/Files.h"

#include <algorithm>

namespace ferrylane {

namespace {

using Targets = QList<FerrylanePairedTarget>;

constexpr mode_t ownersFolder = 0700;
constexpr mode_t ownersFile = 0600;
/// Thousands of phones.
constexpr qint64 maximumFileBytes = 4 << 20;

bool sameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

std::optional<QString> selectedKey()
{
    return standardDefaults().string(ferrylaneSelectedOutboundKeyPref);
}

std::error_code storeList(const Targets& targets)
{
    const QString folder = applicationSupportFolder();
    if (const auto error = platform::createFolders(folder, ownersFolder)) return error;
    // Not permitted on a folder of another owner, which may serve all the same.
    static_cast<void>(platform::setMode(folder, ownersFolder));
    return platform::writeFileAtomically(
        ferrylanePairedTargetsURL(), platform::bytesOf(pairedTargetsJson(targets)), ownersFile);
}

/// False, with a line in the log, when it fails.
bool writeFerrylanePairedTargets(const Targets& targets)
{
    const std::error_code error = storeList(targets);
    if (error) {
        flLog(QStringLiteral("Could not save paired targets: ")
            + QString::fromStdString(error.message()));
    }
    return !error;
}

/// None when there is no readable list.
std::optional<Targets> storedList()
{
    const auto content = platform::readFile(ferrylanePairedTargetsURL(), maximumFileBytes);
    auto targets = content ? parsePairedTargetsJson(*content) : std::nullopt;
    // A list that somebody has opened to others still counts.
    if (targets) static_cast<void>(platform::setMode(ferrylanePairedTargetsURL(), ownersFile));
    return targets;
}

QString normalizedName(const QString& storedName)
{
    const QString name = withoutShortPrefix(storedName);
    return name.isEmpty() ? unnamedPhone() : name;
}

Targets usable(Targets targets)
{
    targets.removeIf(
        [](const FerrylanePairedTarget& target) { return !decodesToKey(target.keyB64); });
    for (FerrylanePairedTarget& target : targets) {
        target.name = normalizedName(target.name);
    }
    return targets;
}

/// The phone of an earlier version, made the only one of a new list. Its file goes only once the
/// list is on the disk.
Targets migratedList()
{
    const auto content = platform::readFile(ferrylanePairedTargetURL(), maximumFileBytes);
    const auto target = content ? parsePairedTargetJson(*content) : std::nullopt;
    if (!target || !decodesToKey(target->keyB64)) return {};

    if (writeFerrylanePairedTargets({*target})) {
        platform::removeFile(ferrylanePairedTargetURL());
        selectFerrylanePairedTarget(*target);
    }
    return {*target};
}

} // namespace

QString ferrylanePairedTargetsURL()
{
    return applicationSupportFolder() + QStringLiteral("/paired-targets-v2.json");
}

QString ferrylanePairedTargetURL()
{
    return applicationSupportFolder() + QStringLiteral("/paired-target-v1.json");
}

QList<FerrylanePairedTarget> loadFerrylanePairedTargets()
{
    auto stored = storedList();
    return stored ? usable(std::move(*stored)) : migratedList();
}

bool saveFerrylanePairedTarget(const FerrylanePairedTarget& target)
{
    Targets targets = loadFerrylanePairedTargets();
    targets.removeIf([&](const FerrylanePairedTarget& other) {
        return other.keyB64 == target.keyB64 || sameName(other.name, target.name);
    });
    targets.append(target);
    if (!writeFerrylanePairedTargets(targets)) return false;
    selectFerrylanePairedTarget(target);
    return true;
}

void refreshFerrylanePairedTargetAddress(const QString& name, const QString& baseURL)
{
    Targets targets = loadFerrylanePairedTargets();
    const auto target = std::find_if(targets.begin(), targets.end(),
        [&](const FerrylanePairedTarget& other) { return sameName(other.name, name); });
    if (target == targets.end() || target->baseURL == baseURL) return;

    target->baseURL = baseURL;
    if (writeFerrylanePairedTargets(targets)) {
        flLog(QStringLiteral("Updated paired address for ") + target->name + QStringLiteral(": ")
            + baseURL);
    }
}

void selectFerrylanePairedTarget(const FerrylanePairedTarget& target)
{
    standardDefaults().set(ferrylaneSelectedOutboundKeyPref, target.keyB64);
}

std::optional<FerrylanePairedTarget> loadFerrylanePairedTarget()
{
    const Targets targets = loadFerrylanePairedTargets();
    if (targets.isEmpty()) return std::nullopt;

    const auto selected = std::find_if(targets.begin(), targets.end(),
        [key = selectedKey()](const FerrylanePairedTarget& other) { return other.keyB64 == key; });
    if (selected != targets.end()) return *selected;
    selectFerrylanePairedTarget(targets.first());
    return targets.first();
}

void forgetFerrylanePairedTarget(const FerrylanePairedTarget& target)
{
    Targets targets = loadFerrylanePairedTargets();
    targets.removeIf(
        [&](const FerrylanePairedTarget& other) { return other.keyB64 == target.keyB64; });
    // A failure has been logged; what the user wanted holds for the choice in any case.
    static_cast<void>(writeFerrylanePairedTargets(targets));
    if (selectedKey() != target.keyB64) return;

    if (targets.isEmpty()) {
        standardDefaults().remove(ferrylaneSelectedOutboundKeyPref);
    } else {
        selectFerrylanePairedTarget(targets.first());
    }
}

void forgetFerrylanePairedTarget()
{
    if (const auto selected = loadFerrylanePairedTarget()) forgetFerrylanePairedTarget(*selected);
}

} // namespace ferrylane
