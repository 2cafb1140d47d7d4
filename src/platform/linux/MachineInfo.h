#pragma once

#include <QByteArray>
#include <QString>

namespace platform {

/// PRETTY_HOSTNAME in the content of a machine-info(5) file, without blanks around it; empty when
/// it is not there, is not quoted as a shell would want it, or is not UTF-8.
[[nodiscard]] QString prettyHostNameIn(QByteArrayView machineInfo);

/// What stands before the first dot.
[[nodiscard]] QString firstLabelOf(const QString& hostName);

} // namespace platform
