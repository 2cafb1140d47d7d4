#pragma once

#include "transferlog/TransferLog.h"

#include <QByteArray>

#include <optional>

namespace ferrylane {

/// The log's file content: a JSON array of objects, written compactly. An entry's date is the
/// number of seconds, with fraction, since 2001-01-01 00:00:00 UTC; its size is left out when
/// unknown.
[[nodiscard]] QByteArray transferLogJson(const QList<FerrylaneTransferLogEntry>& entries);

/// None unless the whole is JSON (RFC 8259) and each element has all that an entry needs, in the
/// right types. Members that an entry does not have are ignored; a size of null is none. A date out
/// of QDateTime's reach is not one.
[[nodiscard]] std::optional<QList<FerrylaneTransferLogEntry>> parseTransferLogJson(
    const QByteArray& json);

} // namespace ferrylane
