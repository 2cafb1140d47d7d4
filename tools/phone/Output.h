#pragma once

#include <QString>

namespace ferrylane::phone {

/// Prints a line, which is out at once, also into a pipe.
void print(const QString& line);
/// The same on the standard error output.
void tell(const QString& line);

} // namespace ferrylane::phone
