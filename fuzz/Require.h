#pragma once

#include <cstdlib>

/// What a fuzz target promises; the fuzzer reports the input with which it does not hold.
inline void require(bool holds)
{
    if (!holds) std::abort();
}
