#include "support/TestVectors.h"

#include <QFile>
#include <QJsonDocument>

namespace support {

namespace {

QJsonDocument vectorDocument(const QString& name)
{
    QFile file(QStringLiteral(FERRYLANE_VECTORS "/") + name);
    if (!file.open(QIODevice::ReadOnly)) qFatal("cannot read %s", qPrintable(name));
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    if (document.isNull()) qFatal("%s: %s", qPrintable(name), qPrintable(error.errorString()));
    return document;
}

QJsonArray nonEmpty(QJsonArray rows, const QString& file)
{
    if (rows.isEmpty()) qFatal("%s holds no rows", qPrintable(file));
    return rows;
}

QByteArray bytesOfPart(const QJsonObject& part)
{
    const QByteArray bytes = part.contains(u"hex") ? vectorHex(part.value(u"hex"))
                                                   : part.value(u"text").toString().toUtf8();
    return bytes.repeated(part.value(u"times").toInt(1));
}

} // namespace

QJsonObject vectorObject(const QString& file)
{
    const auto document = vectorDocument(file);
    if (!document.isObject()) qFatal("%s holds no object", qPrintable(file));
    return document.object();
}

QJsonArray vectorRows(const QString& file)
{
    return nonEmpty(vectorDocument(file).array(), file);
}

QJsonArray vectorRows(const QString& file, const QString& member)
{
    return nonEmpty(vectorObject(file).value(member).toArray(), file);
}

QByteArray vectorBytes(const QJsonValue& parts)
{
    if (parts.isString()) return parts.toString().toUtf8();
    if (!parts.isArray()) qFatal("bytes are missing");
    QByteArray bytes;
    for (const QJsonValue part : parts.toArray()) {
        bytes += bytesOfPart(part.toObject());
    }
    return bytes;
}

QByteArray vectorHex(const QJsonValue& digits)
{
    if (!digits.isString()) qFatal("hexadecimal digits are missing");
    return QByteArray::fromHex(digits.toString().toLatin1());
}

std::optional<QString> vectorText(const QJsonValue& text)
{
    return text.isString() ? std::optional(text.toString()) : std::nullopt;
}

std::string vectorTrace(const QJsonValue& row)
{
    return QJsonDocument(row.toObject()).toJson(QJsonDocument::Compact).left(400).toStdString();
}

} // namespace support
