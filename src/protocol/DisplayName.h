#pragma once

#include <QString>

namespace ferrylane {

/// The name of a phone that has told none.
[[nodiscard]] QString unnamedPhone();

/// Drops a leading "fl ", in any case of letters, and trims what is left. Other names stay as they
/// are, blanks at their ends included.
[[nodiscard]] QString withoutShortPrefix(const QString& name);

/// What people see of a phone by the instance name of its DNS-SD service: without " ferrylane" at
/// the end and "fl " at the start, in any case of letters, and trimmed.
[[nodiscard]] QString ferrylaneDisplayNameForDiscoveredService(const QString& instanceName);

} // namespace ferrylane
