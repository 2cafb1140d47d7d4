#include "pairing/PairedTargets.h"

#include "core/Encodings.h"
#include "core/Log.h"
#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "platform/Files.h"
#include "protocol/PairingLink.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <mutex>
#include <utility>

namespace ferrylane {

namespace {

using Targets = QList<FerrylanePairedTarget>;

/// Thousands of phones.
constexpr qint64 maximumFileBytes = 4 << 20;

bool sameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

std::optional<QString> selectedKey()
{
    return userSettings().string(ferrylaneSelectedOutboundKeyPref);
}

/// Serialises the changes of the list, without being held while anybody waits for the disk: a
/// change is prepared beside the list, and takes its place only if no other has come in between.
struct Changes {
    std::mutex mutex;
    quint64 count = 0;
};

Changes& changes()
{
    static Changes changes;
    return changes;
}

quint64 changeCount()
{
    const std::lock_guard lock(changes().mutex);
    return changes().count;
}

std::optional<FerrylanePairedTarget> targetOf(const QJsonObject& object)
{
    const QJsonValue name = object[u"name"];
    const QJsonValue baseURL = object[u"baseURL"];
    const QJsonValue keyB64 = object[u"keyB64"];
    if (!name.isString() || !baseURL.isString() || !keyB64.isString()) return std::nullopt;
    return FerrylanePairedTarget{name.toString(), baseURL.toString(), keyB64.toString()};
}

struct StoredList {
    std::optional<Targets> targets; ///< none when there is no readable list
    bool isDamaged = false;         ///< there is one, but it cannot be read
};

StoredList storedList()
{
    std::error_code error;
    const auto content = platform::readFile(ferrylanePairedTargetsURL(), maximumFileBytes, error);
    StoredList list{content ? parsePairedTargetsJson(*content) : std::nullopt};
    // What is no file, such as a folder, stays where somebody has put it.
    list.isDamaged = !list.targets && error != std::errc::no_such_file_or_directory
        && error != std::errc::invalid_argument;
    return list;
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

/// The phone of an earlier version.
Targets earlierList()
{
    std::error_code error;
    const auto content = platform::readFile(ferrylanePairedTargetURL(), maximumFileBytes, error);
    const auto target = content ? parsePairedTargetJson(*content) : std::nullopt;
    if (!target || !decodesToKey(target->keyB64)) return {};
    return {*target};
}

/// Puts a list that has been prepared in the place of the one read before it was. False when that
/// has been changed meanwhile.
bool commit(
    platform::Replacement& replacement, bool isDamaged, quint64 countBefore, std::error_code& error)
{
    const std::lock_guard lock(changes().mutex);
    if (changes().count != countBefore) return false;
    error = replacement.result().failure;
    if (!error && isDamaged) error = setAside(ferrylanePairedTargetsURL());
    if (error) return true;
    if (replacement.commit()) ++changes().count;
    error = replacement.result().failure;
    return true;
}

/// Makes the change, which tells whether there is one, to the list as it is now.
template <typename Change> std::error_code tryChange(const Change& change)
{
    for (;;) {
        const quint64 countBefore = changeCount();
        const StoredList stored = storedList();
        const Targets earlier = stored.targets ? Targets() : earlierList();
        Targets targets = stored.targets ? usable(*stored.targets) : earlier;
        if (!change(targets)) return {};

        auto error = prepareOwnFolder(applicationSupportFolder());
        if (error) return error;
        auto replacement = ownReplacement(
            ferrylanePairedTargetsURL(), platform::bytesOf(pairedTargetsJson(targets)));
        if (!commit(replacement, stored.isDamaged, countBefore, error)) continue;
        if (error) return error;
        replacement.sync();
        logWeaknesses(ferrylanePairedTargetsURL(), replacement.result());
        // Taken over, or given up with this change.
        if (!earlier.isEmpty()) QFile::remove(ferrylanePairedTargetURL());
        return {};
    }
}

/// False, with a line in the log, when the change could not be written. It is then not made.
template <typename Change> bool changeList(const Change& change)
{
    const std::error_code error = tryChange(change);
    if (error) {
        flLog(QStringLiteral("Could not save paired targets"), error);
    }
    return !error;
}

/// The phone of an earlier version, made the only one of a new list.
Targets migratedList()
{
    Targets earlier = earlierList();
    const auto takeOver = [&](const Targets& targets) { return targets == earlier; };
    if (!earlier.isEmpty() && changeList(takeOver)) selectFerrylanePairedTarget(earlier.first());
    return earlier;
}

} // namespace

QByteArray pairedTargetsJson(const QList<FerrylanePairedTarget>& targets)
{
    QJsonArray array;
    for (const auto& [name, baseURL, keyB64] : targets) {
        array.append(QJsonObject{{QStringLiteral("name"), name},
            {QStringLiteral("baseURL"), baseURL}, {QStringLiteral("keyB64"), keyB64}});
    }
    // Slashes stand in text only.
    return compactJson(QJsonDocument(array)).replace("/", "\\/");
}

std::optional<QList<FerrylanePairedTarget>> parsePairedTargetsJson(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray()) return std::nullopt;

    QList<FerrylanePairedTarget> targets;
    for (const QJsonValue value : document.array()) {
        // What is no object gives an empty one here, which lacks everything.
        auto target = targetOf(value.toObject());
        if (!target) return std::nullopt;
        targets.append(std::move(*target));
    }
    return targets;
}

std::optional<FerrylanePairedTarget> parsePairedTargetJson(const QByteArray& json)
{
    return targetOf(QJsonDocument::fromJson(json).object());
}

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
    return stored.targets ? usable(std::move(*stored.targets)) : migratedList();
}

bool saveFerrylanePairedTarget(const FerrylanePairedTarget& target)
{
    const bool isStored = changeList([&](Targets& targets) {
        targets.removeIf([&](const FerrylanePairedTarget& other) {
            return other.keyB64 == target.keyB64 || sameName(other.name, target.name);
        });
        targets.append(target);
        return true;
    });
    if (isStored) selectFerrylanePairedTarget(target);
    return isStored;
}

void refreshFerrylanePairedTargetAddress(const QString& name, const QString& baseURL)
{
    QString changedName;
    const bool isStored = changeList([&](Targets& targets) {
        const auto target = std::find_if(targets.begin(), targets.end(),
            [&](const FerrylanePairedTarget& other) { return sameName(other.name, name); });
        const bool isNew = target != targets.end() && target->baseURL != baseURL;
        changedName = isNew ? target->name : QString();
        if (isNew) target->baseURL = baseURL;
        return isNew;
    });
    if (isStored && !changedName.isNull()) {
        flLog(QStringLiteral("Updated paired address for ") + changedName + QStringLiteral(": ")
            + baseURL);
    }
}

void selectFerrylanePairedTarget(const FerrylanePairedTarget& target)
{
    userSettings().set(ferrylaneSelectedOutboundKeyPref, target.keyB64);
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
    Targets left;
    // A failure has been logged; what the user wanted holds for the choice in any case.
    static_cast<void>(changeList([&](Targets& targets) {
        targets.removeIf(
            [&](const FerrylanePairedTarget& other) { return other.keyB64 == target.keyB64; });
        left = targets;
        return true;
    }));
    if (selectedKey() != target.keyB64) return;

    if (left.isEmpty()) {
        userSettings().remove(ferrylaneSelectedOutboundKeyPref);
    } else {
        selectFerrylanePairedTarget(left.first());
    }
}

void forgetFerrylanePairedTarget()
{
    if (const auto selected = loadFerrylanePairedTarget()) forgetFerrylanePairedTarget(*selected);
}

void removeFerrylanePairedTargets()
{
    const std::lock_guard lock(changes().mutex);
    // A change that is being prepared must not bring them back.
    ++changes().count;
    QFile::remove(ferrylanePairedTargetURL());
    QFile::remove(ferrylanePairedTargetsURL());
    removeSetAside(ferrylanePairedTargetsURL());
}

} // namespace ferrylane
