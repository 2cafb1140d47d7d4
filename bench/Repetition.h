#pragma once

#include <cstdio>

namespace bench {

/// Runs something so many times and collects what it notes in `Runs`. Once more before: memory and
/// files that are touched for the first time are slow on virtual machines.
template <class Runs, class Measured> Runs repeat(Measured& measured, int count)
{
    std::fprintf(stderr, "Warming up\n");
    Runs warmUp;
    measured.run(warmUp);

    Runs runs;
    for (int i = 1; i <= count; ++i) {
        std::fprintf(stderr, "Run %d of %d\n", i, count);
        measured.run(runs);
    }
    return runs;
}

} // namespace bench
