#pragma once

#include "platform/ByteBuffer.h"

#include <QByteArray>

#include <functional>

namespace bench {

/// Reads one HTTP request, whose bytes are known to be right, from a blocking socket. Throws
/// std::runtime_error when the connection ends before the request does.
class RequestReader {
public:
    using ChunkHandler = std::function<void(platform::ByteView payload)>;

    explicit RequestReader(int connection) : connection_(connection) {}

    /// Reads the head and returns its first line.
    [[nodiscard]] QByteArray requestLine();
    /// Reads a chunked body up to its last chunk. Each chunk is held in memory whole.
    void readBody(const ChunkHandler& takeChunk);

private:
    void need(std::size_t count);
    [[nodiscard]] QByteArray takeLine();

    int connection_;
    platform::ByteBuffer bytes_;
};

/// Sends all of `answer`. Throws std::system_error.
void sendAnswer(int connection, const QByteArray& answer);

} // namespace bench
