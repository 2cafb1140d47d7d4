#pragma once

#include <QByteArray>

#include <cstdint>

namespace bench {

/// Connects to 127.0.0.1, sends `request`, and reads until the peer closes its side. Returns the
/// seconds from before the connecting to after the reading. Throws std::runtime_error when the
/// answer does not end with `answerEnd`.
[[nodiscard]] double secondsToAnswer(
    std::uint16_t port, const QByteArray& request, const QByteArray& answerEnd);

} // namespace bench
