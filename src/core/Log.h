#pragma once

#include <QString>

#include <system_error>

namespace ferrylane {

/// Appends one line to the log: the time in UTC, two blanks, the message as textForLog() has it, so
/// that nothing a peer sends can pass for a line of the log or fill it. From any thread; lines
/// never mix.
///
/// The file is ferrylane.log in logFolder(), both for their owner's eyes only, created when
/// missing, even while the program runs. It grows without limit. Errors are ignored: there is
/// nowhere else to tell them.
void flLog(const QString& message);
/// The same: what could not be done, ": ", and why.
void flLog(const QString& what, const std::error_code& why);

} // namespace ferrylane
