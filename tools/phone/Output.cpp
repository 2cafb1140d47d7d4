#include "phone/Output.h"

#include <cstdio>

namespace ferrylane::phone {

void print(const QString& line)
{
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

void tell(const QString& line)
{
    std::fprintf(stderr, "%s\n", line.toUtf8().constData());
}

} // namespace ferrylane::phone
