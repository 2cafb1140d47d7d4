#include "transferlog/TransferLogJson.h"

#include "core/Json.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

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
    for (const QLatin1StringView key : {directionKey, fileNameKey, peerKey, resultKey}) {
        if (!object.value(key).isString()) return std::nullopt;
    }
    const auto date = dateOf(object.value(dateKey));
    if (!date) return std::nullopt;

    const QJsonValue size = object.value(sizeKey);
    const bool isSizeKnown = !size.isUndefined() && !size.isNull();
    const auto bytes = integerOf(size);
    if (isSizeKnown && !bytes) return std::nullopt;

    return FerrylaneTransferLogEntry{*date, common.same(object.value(directionKey).toString()),
        object.value(fileNameKey).toString(), common.same(object.value(peerKey).toString()),
        common.same(object.value(resultKey).toString()), bytes};
}

/// Takes an array apart without making a tree of it, which costs many times the text's size. What
/// an element is, and whether it is JSON at all, is for others to say.
class ArrayReader {
public:
    explicit ArrayReader(QByteArrayView json) : rest_(json)
    {
        constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
        if (rest_.startsWith(byteOrderMark)) rest_ = rest_.sliced(byteOrderMark.size());
        isGood_ = take('[');
        isAtEnd_ = isGood_ && take(']');
    }

    /// The next object; none at the end, and where something else is.
    std::optional<QByteArrayView> next()
    {
        if (!isGood_ || isAtEnd_) return std::nullopt;
        skipBlanks();
        const qsizetype length = objectLength();
        isGood_ = length > 0;
        if (!isGood_) return std::nullopt;
        const QByteArrayView object = rest_.first(length);
        rest_ = rest_.sliced(length);
        isAtEnd_ = take(']');
        isGood_ = isAtEnd_ || take(',');
        return object;
    }

    /// Whether the array has been read to its end and nothing follows.
    [[nodiscard]] bool isComplete()
    {
        skipBlanks();
        return isGood_ && isAtEnd_ && rest_.isEmpty();
    }

private:
    void skipBlanks()
    {
        constexpr QByteArrayView blanks(" \t\n\r");
        while (!rest_.isEmpty() && blanks.contains(rest_.front())) {
            rest_ = rest_.sliced(1);
        }
    }

    bool take(char c)
    {
        skipBlanks();
        if (rest_.isEmpty() || rest_.front() != c) return false;
        rest_ = rest_.sliced(1);
        return true;
    }

    /// Up to the brace that closes the first one, 0 when there is none.
    [[nodiscard]] qsizetype objectLength() const
    {
        if (rest_.isEmpty() || rest_.front() != '{') return 0;
        qsizetype depth = 0;
        bool isInText = false;
        for (qsizetype i = 0; i < rest_.size(); ++i) {
            const char c = rest_[i];
            if (c == '"') isInText = !isInText;
            if (isInText && c == '\\') ++i; // whatever it escapes
            if (isInText) continue;
            if (c == '{') ++depth;
            if (c == '}' && --depth == 0) return i + 1;
        }
        return 0;
    }

    QByteArrayView rest_;
    bool isGood_ = false;
    bool isAtEnd_ = false;
};

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
    QList<FerrylaneTransferLogEntry> entries;
    CommonTexts common;
    ArrayReader objects(json);
    while (const auto object = objects.next()) {
        const auto document
            = QJsonDocument::fromJson(QByteArray::fromRawData(object->data(), object->size()));
        // What is no object gives an empty one here, which lacks everything.
        const auto entry = entryOf(document.object(), common);
        if (!entry) return std::nullopt;
        entries.append(*entry);
    }
    if (!objects.isComplete()) return std::nullopt;
    return entries;
}

} // namespace ferrylane
