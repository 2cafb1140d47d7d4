#include "transferlog/TransferLog.h"

#include "core/Encodings.h"

#include <QByteArrayList>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <cmath>

namespace ferrylane {

namespace {

/// 2001-01-01 00:00:00 UTC in milliseconds since 1970.
constexpr qint64 referenceTime = 978'307'200'000;
/// More than thirty thousand years either way, and far from where milliseconds overflow.
constexpr double maximumDateSeconds = 1e12;

QJsonObject objectOf(const FerrylaneTransferLogEntry& entry)
{
    const auto sinceReference = static_cast<double>(entry.date.toMSecsSinceEpoch() - referenceTime);
    QJsonObject object{{QStringLiteral("date"), sinceReference / 1000.0},
        {QStringLiteral("direction"), entry.direction},
        {QStringLiteral("fileName"), entry.fileName}, {QStringLiteral("peer"), entry.peer},
        {QStringLiteral("result"), entry.result}};
    if (entry.size) object.insert(QStringLiteral("size"), *entry.size);
    return object;
}

std::optional<QDateTime> dateOf(const QJsonValue& value)
{
    if (!value.isDouble() || std::abs(value.toDouble()) > maximumDateSeconds) return std::nullopt;
    const qint64 milliseconds = std::llround(value.toDouble() * 1000.0);
    // Made from one in UTC: with a time zone that is an object, each has memory of its own.
    static const QDateTime utc = QDateTime::currentDateTimeUtc();
    QDateTime date = utc;
    date.setMSecsSinceEpoch(referenceTime + milliseconds);
    return date;
}

std::optional<qint64> integerOf(const QJsonValue& value)
{
    // toInteger() gives its fallback for what is no whole number of 64 bits, so whatever gives both
    // fallbacks is none.
    if (value.toInteger(0) != value.toInteger(1)) return std::nullopt;
    return value.toInteger();
}

/// Texts that most entries have in common, each kept in memory once.
class CommonTexts {
public:
    QString same(const QString& text)
    {
        // Not as many as there may be entries: then they are not common.
        constexpr qsizetype maximumCount = 1000;
        if (texts_.size() >= maximumCount && !texts_.contains(text)) return text;
        return *texts_.insert(text);
    }

private:
    QSet<QString> texts_;
};

std::optional<FerrylaneTransferLogEntry> entryOf(const QJsonObject& object, CommonTexts& common)
{
    const QJsonValue direction = object[u"direction"];
    const QJsonValue fileName = object[u"fileName"];
    const QJsonValue peer = object[u"peer"];
    const QJsonValue result = object[u"result"];
    for (const QJsonValue& text : {direction, fileName, peer, result}) {
        if (!text.isString()) return std::nullopt;
    }
    const QJsonValue size = object[u"size"];
    const bool isSizeKnown = !size.isUndefined() && !size.isNull();
    const auto bytes = integerOf(size);
    const auto date = dateOf(object[u"date"]);
    if (!date || (isSizeKnown && !bytes)) return std::nullopt;
    return FerrylaneTransferLogEntry{*date, common.same(direction.toString()), fileName.toString(),
        common.same(peer.toString()), common.same(result.toString()), bytes};
}

/// Where the text ends that begins at `start` with its quote; the size where it does not.
qsizetype endOfText(QByteArrayView json, qsizetype start)
{
    qsizetype i = start + 1;
    while (i < json.size() && json[i] != '"') {
        i += json[i] == '\\' ? 2 : 1; // with whatever it escapes
    }
    return i;
}

/// The objects of an array, without a tree of the whole, which costs many times the text's size.
/// None where something else is or lacks; whether the objects are JSON is for others to say.
std::optional<QList<QByteArrayView>> objectsIn(QByteArrayView json)
{
    constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
    if (json.startsWith(byteOrderMark)) json = json.sliced(byteOrderMark.size());
    QList<QByteArrayView> objects;
    QByteArray around; // what is not in an object, blanks left out; an object is its first brace
    qsizetype start = 0;
    qsizetype depth = 0;
    for (qsizetype i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (depth == 0) {
            if (!QByteArrayView(" \t\n\r").contains(c)) around += c;
            start = i;
            depth = c == '{' ? 1 : 0;
        } else if (c == '"') {
            i = endOfText(json, i);
        } else if (c == '{') {
            ++depth;
        } else if (c == '}' && --depth == 0) {
            objects.append(json.sliced(start, i + 1 - start));
        }
    }
    const bool isArray
        = depth == 0 && around == '[' + QByteArrayList(objects.size(), "{").join(',') + ']';
    return isArray ? std::optional(objects) : std::nullopt;
}

} // namespace

QByteArray transferLogJson(const QList<FerrylaneTransferLogEntry>& entries)
{
    QByteArray json = "[";
    for (const auto& entry : entries) {
        if (json.size() > 1) json += ',';
        json += compactJson(QJsonDocument(objectOf(entry)));
    }
    json += ']';
    return json;
}

std::optional<QList<FerrylaneTransferLogEntry>> parseTransferLogJson(const QByteArray& json)
{
    const auto objects = objectsIn(json);
    if (!objects) return std::nullopt;
    QList<FerrylaneTransferLogEntry> entries;
    CommonTexts common;
    for (const QByteArrayView object : *objects) {
        const auto document
            = QJsonDocument::fromJson(QByteArray::fromRawData(object.data(), object.size()));
        // What is no object gives an empty one here, which lacks everything.
        const auto entry = entryOf(document.object(), common);
        if (!entry) return std::nullopt;
        entries.append(*entry);
    }
    return entries;
}

} // namespace ferrylane
