#include "bench/PlainReceiver.h"

#include "bench/SealedUpload.h"
#include "platform/ByteBuffer.h"
#include "receiver/V4Stream.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <system_error>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

using platform::ByteView;

namespace {

void require(bool success, const char* what)
{
    if (!success) throw std::system_error(errno, std::system_category(), what);
}

/// Reads one upload whose bytes are known to be right. Ends the process when reading or writing
/// fails; the sender then misses its answer.
class PlainUpload {
public:
    PlainUpload(int connection, int file) : connection_(connection), file_(file) {}

    void receive()
    {
        while (!takeLine().isEmpty()) {}
        while (const std::size_t size = takeLine().toULongLong(nullptr, 16)) {
            need(size + lineBreakBytes);
            store(bytes_.unread().first(size));
            bytes_.consume(size + lineBreakBytes);
        }
    }

private:
    static constexpr std::size_t lineBreakBytes = 2;
    // Beyond what is needed, for the size line of the next chunk.
    static constexpr std::size_t readAhead = 65536;

    void need(std::size_t count)
    {
        while (bytes_.size() < count) {
            const auto space = bytes_.prepare(count - bytes_.size() + readAhead);
            const ssize_t received = recv(connection_, space.data(), space.size(), 0);
            if (received <= 0) _exit(1);
            bytes_.commit(static_cast<std::size_t>(received));
        }
    }

    QByteArray takeLine()
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

    void store(ByteView record) const
    {
        if (platform::readU32BigEndian(record.subspan(4)) == ferrylane::finalRecordIndex) return;
        ByteView rest = record.subspan(
            ferrylane::recordHeadBytes, record.size() - ferrylane::recordOverheadBytes);
        while (!rest.empty()) {
            const ssize_t written = write(file_, rest.data(), rest.size());
            if (written <= 0) _exit(1);
            rest = rest.subspan(static_cast<std::size_t>(written));
        }
    }

    int connection_;
    int file_;
    platform::ByteBuffer bytes_;
};

[[noreturn]] void serve(int listener, const QByteArray& path)
{
    const QByteArray answer = storedAnswer();
    for (;;) {
        const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        const int file = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (connection < 0 || file < 0) _exit(1);
        PlainUpload(connection, file).receive();
        close(file);
        if (send(connection, answer.constData(), static_cast<std::size_t>(answer.size()), 0) < 0) {
            _exit(1);
        }
        close(connection);
    }
}

} // namespace

PlainReceiver::Listener PlainReceiver::listenOnLoopback()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(descriptor >= 0 && bind(descriptor, generic, length) == 0 && listen(descriptor, 1) == 0
            && getsockname(descriptor, generic, &length) == 0,
        "cannot listen for the plain receiver");
    return {descriptor, ntohs(address.sin_port)};
}

PlainReceiver::PlainReceiver(const QString& file) : PlainReceiver(listenOnLoopback(), file) {}

PlainReceiver::PlainReceiver(Listener listener, const QString& file)
    : port_(listener.port), process_(fork())
{
    require(process_ >= 0, "cannot start the plain receiver");
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        serve(listener.descriptor, QFile::encodeName(file));
    }
    close(listener.descriptor);
}

PlainReceiver::~PlainReceiver()
{
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

} // namespace bench
