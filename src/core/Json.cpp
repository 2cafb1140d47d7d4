#include "core/Json.h"

namespace ferrylane {

QByteArray compactJson(const QJsonDocument& document)
{
    return document.toJson(QJsonDocument::Compact).replace("\"\xEF\xBB\xBF", "\"\\ufeff");
}

} // namespace ferrylane
