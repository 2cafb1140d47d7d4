#include "pairing/PairedTargetJson.h"

#include "core/Json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ferrylane {

namespace {

constexpr QLatin1StringView nameKey{"name"};
constexpr QLatin1StringView baseURLKey{"baseURL"};
constexpr QLatin1StringView keyB64Key{"keyB64"};

QJsonObject objectOf(const FerrylanePairedTarget& target)
{
    return {{nameKey, target.name}, {baseURLKey, target.baseURL}, {keyB64Key, target.keyB64}};
}

std::optional<FerrylanePairedTarget> targetOf(const QJsonObject& object)
{
    for (const QLatin1StringView key : {nameKey, baseURLKey, keyB64Key}) {
        if (!object.value(key).isString()) return std::nullopt;
    }
    return FerrylanePairedTarget{object.value(nameKey).toString(),
        object.value(baseURLKey).toString(), object.value(keyB64Key).toString()};
}

} // namespace

QByteArray pairedTargetsJson(const QList<FerrylanePairedTarget>& targets)
{
    QJsonArray array;
    for (const auto& target : targets) {
        array.append(objectOf(target));
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

} // namespace ferrylane
