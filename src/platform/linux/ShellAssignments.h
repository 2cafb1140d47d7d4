#pragma once

#include <QByteArray>

#include <optional>

namespace platform {

/// The right-hand side of the last `name=...` line of a file of shell variable assignments, such as
/// user-dirs.dirs or machine-info, as it stands there but for blanks around it. Values of more than
/// one line are not known here.
[[nodiscard]] QByteArray lastAssignment(QByteArrayView text, QByteArrayView name);

/// A right-hand side without its quotes and escapes, by the shell's rules (POSIX.1-2017, Shell
/// Command Language, 2.2), with nothing expanded; none when a quote is not closed.
[[nodiscard]] std::optional<QByteArray> unquoted(QByteArrayView value);

} // namespace platform
