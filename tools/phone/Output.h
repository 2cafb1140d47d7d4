#pragma once

#include <QString>

#include <cstdio>

namespace ferrylane::phone {

/// Prints a line, which is out at once, also into a pipe.
inline void print(const QString& line)
{
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

/// The same on the standard error output.
inline void tell(const QString& line)
{
    std::fprintf(stderr, "%s\n", line.toUtf8().constData());
}

} // namespace ferrylane::phone
