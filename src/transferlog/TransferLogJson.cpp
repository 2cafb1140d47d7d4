#include "transferlog/TransferLogJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace ferrylane {

namespace {

constexpr QLatin1StringView dateKey{"date"};
constexpr QLatin1StringView directionKey{"direction"};
constexpr QLatin1StringView fileNameKey{"fileName"};
constexpr QLatin1StringView peerKey{"peer"};
constexpr QLatin1StringView resultKey{"result"};
constexpr QLatin1StringView sizeKey{"size"};

/// 2001-01-01 00:00:00 UTC in milliseconds since 1970.
constexpr qint64 referenceTime = 978'307'200'000;
/// More than thirty thousand years either way, and far from where milliseconds overflow.
constexpr double maximumDateSeconds = 1e12;

QJsonObject objectOf(const FerrylaneTransferLogEntry& entry)
{
    const auto sinceReference = static_cast<double>(entry.date.toMSecsSinceEpoch() - referenceTime);
    QJsonObject object{{dateKey, sinceReference / 1000.0}, {directionKey, entry.direction},
        {fileNameKey, entry.fileName}, {peerKey, entry.peer}, {resultKey, entry.result}};
    if (entry.size) object.insert(sizeKey, *entry.size);
    return object;
}

std::optional<QDateTime> dateOf(const QJsonValue& value)
{
    if (!value.isDouble() || std::abs(value.toDouble()) > maximumDateSeconds) return std::nullopt;
    const qint64 milliseconds = std::llround(value.toDouble() * 1000.0);
    return QDateTime::fromMSecsSinceEpoch(referenceTime + milliseconds, Qt::UTC);
}

std::optional<qint64> integerOf(const QJsonValue& value)
{
    // toInteger() gives its fallback for what is no whole number of 64 bits, so whatever gives both
    // fallbacks is none.
    if (value.toInteger(0) != value.toInteger(1)) return std::nullopt;
    return value.toInteger();
}

std::optional<FerrylaneTransferLogEntry> entryOf(const QJsonObject& object)
{
    for (const QLatin1StringView key : {directionKey, fileNameKey, peerKey, resultKey}) {
        if (!object.value(key).isString()) return std::nullopt;
    }
    const auto date = dateOf(object.value(dateKey));
    if (!date) return std::nullopt;

    const QJsonValue size = object.value(sizeKey);
    const bool isSizeKnown = !size.isUndefined() && !size.isNull();
    const auto bytes = integerOf(size);
    if (isSizeKnown && !bytes) return std::nullopt;

    return FerrylaneTransferLogEntry{*date, object.value(directionKey).toString(),
        object.value(fileNameKey).toString(), object.value(peerKey).toString(),
        object.value(resultKey).toString(), bytes};
}

} // namespace

QByteArray transferLogJson(const QList<FerrylaneTransferLogEntry>& entries)
{
    QJsonArray array;
    for (const auto& entry : entries) {
        array.append(objectOf(entry));
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<FerrylaneTransferLogEntry>> parseTransferLogJson(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray()) return std::nullopt;

    QList<FerrylaneTransferLogEntry> entries;
    for (const QJsonValue value : document.array()) {
        // What is no object gives an empty one here, which lacks everything.
        const auto entry = entryOf(value.toObject());
        if (!entry) return std::nullopt;
        entries.append(*entry);
    }
    return entries;
}

} // namespace ferrylane
