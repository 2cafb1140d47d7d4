#pragma once

#include <QByteArray>

#include <cstdlib>

/// What a fuzz target promises; the fuzzer reports the input with which it does not hold.
inline void require(bool holds)
{
    if (!holds) std::abort();
}

/// The target itself, one a program. `input` ends without a zero behind it, so that the sanitizer
/// sees what reads on.
void check(const QByteArray& input);
