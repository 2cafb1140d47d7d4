#include "bench/RequestReader.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <sys/socket.h>

namespace bench {

namespace {

constexpr std::size_t lineBreakBytes = 2;
// Beyond what is needed, for the size line of the next chunk.
constexpr std::size_t readAhead = 65536;

} // namespace

QByteArray RequestReader::requestLine()
{
    QByteArray first = takeLine();
    while (!takeLine().isEmpty()) {}
    return first;
}

void RequestReader::readBody(const ChunkHandler& takeChunk)
{
    while (const std::size_t size = takeLine().toULongLong(nullptr, 16)) {
        need(size + lineBreakBytes);
        takeChunk(bytes_.unread().first(size));
        bytes_.consume(size + lineBreakBytes);
    }
    // The empty line that ends the body. Left unread, it would make closing reset the connection.
    static_cast<void>(takeLine());
}

void RequestReader::need(std::size_t count)
{
    while (bytes_.size() < count) {
        const auto space = bytes_.prepare(count - bytes_.size() + readAhead);
        const ssize_t received = recv(connection_, space.data(), space.size(), 0);
        if (received <= 0) throw std::runtime_error("the request is not complete");
        bytes_.commit(static_cast<std::size_t>(received));
    }
}

QByteArray RequestReader::takeLine()
{
    qsizetype length = -1;
    while ((length = platform::textViewOf(bytes_.unread()).indexOf("\r\n")) < 0) {
        need(bytes_.size() + 1);
    }
    QByteArray line
        = platform::toByteArray(bytes_.unread().first(static_cast<std::size_t>(length)));
    bytes_.consume(static_cast<std::size_t>(length) + lineBreakBytes);
    return line;
}

void sendAnswer(int connection, const QByteArray& answer)
{
    const auto length = static_cast<std::size_t>(answer.size());
    // Shorter than any socket's buffer, so never taken in part.
    if (send(connection, answer.constData(), length, MSG_NOSIGNAL) < 0) {
        throw std::system_error(errno, std::system_category(), "cannot answer");
    }
}

} // namespace bench
