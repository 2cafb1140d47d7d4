#include "bench/Exchange.h"

#include "bench/Interruption.h"
#include "bench/Stopwatch.h"
#include "support/TcpClient.h"

#include <stdexcept>

namespace bench {

double secondsToAnswer(std::uint16_t port, const QByteArray& request, const QByteArray& answerEnd)
{
    const Stopwatch stopwatch;
    support::TcpClient client(port);
    const bool sent = client.send(request);
    const QByteArray answer = client.receiveAll();
    const double seconds = stopwatch.seconds();

    throwIfInterrupted();
    if (!sent || !answer.endsWith(answerEnd)) {
        throw std::runtime_error("unexpected answer: \"" + answer.toStdString() + '"');
    }
    return seconds;
}

} // namespace bench
