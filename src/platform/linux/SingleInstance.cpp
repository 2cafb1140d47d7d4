#include "platform/SingleInstance.h"

#include "platform/linux/FileCalls.h"

#include <QDir>
#include <QSocketNotifier>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace platform {

namespace {

constexpr auto socketName = "requests";
constexpr char answer = '!';
constexpr qsizetype maximumRequest = 64;
/// Milliseconds between the connection and the request, at most: they are one step.
constexpr int requestPatience = 200;
/// For the other process to begin to listen, or to end.
constexpr auto pauseBetweenAttempts = std::chrono::milliseconds(20);

/// A folder that belongs to this user alone; not open otherwise.
FileDescriptor openOwnFolder(const QByteArray& path)
{
    FileDescriptor folder = openFile(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    struct stat status {};
    if (!folder.isOpen() || ::fstat(folder.get(), &status) != 0) return {};
    constexpr mode_t ofOthers = S_IRWXG | S_IRWXO;
    if (status.st_uid == ::geteuid() && (status.st_mode & ofOthers) == 0) return folder;
    errno = EPERM;
    return {};
}

FileDescriptor createOwnFolder(const QByteArray& path)
{
    constexpr mode_t ownersOnly = 0700;
    if (::mkdir(path.constData(), ownersOnly) != 0 && errno != EEXIST) return {};
    return openOwnFolder(path);
}

/// Opens the folder of `program` for what belongs to this user and this run of the computer,
/// created with mode 0700 when missing: in $XDG_RUNTIME_DIR where that is the user's own, else in
/// the folder for temporary files. Another user can neither enter it nor have made it. Not open
/// when there is no such folder, and lastError() tells why.
FileDescriptor openRuntimeFolder(const QString& program)
{
    const QString sessionFolder = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
    if (sessionFolder.startsWith(u'/') && openOwnFolder(nativePath(sessionFolder)).isOpen()) {
        FileDescriptor folder = createOwnFolder(nativePath(sessionFolder + u'/' + program));
        if (folder.isOpen()) return folder;
    }
    return createOwnFolder(
        nativePath(QStringLiteral("%1/%2-%3").arg(QDir::tempPath(), program).arg(::geteuid())));
}

FileDescriptor newSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// By way of the open folder, because an address has room for 107 bytes only (unix(7)).
sockaddr_un socketAddress(const FileDescriptor& folder)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(
        address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder.get(), socketName);
    return address;
}

/// Listens in the place of a process that has had the claim before; not open when it fails.
FileDescriptor listeningSocket(const FileDescriptor& folder)
{
    ::unlinkat(folder.get(), socketName, 0);
    const sockaddr_un address = socketAddress(folder);
    FileDescriptor socket = newSocket();
    const bool listens
        = ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
        && ::listen(socket.get(), SOMAXCONN) == 0;
    return listens ? std::move(socket) : FileDescriptor();
}

enum class Reply {
    answered,
    none, ///< by the deadline, or because the process has ended
    nobodyListens
};

/// What the process that has the claim says to `request`.
Reply replyTo(const QByteArray& request, const FileDescriptor& folder, TimePoint deadline)
{
    const sockaddr_un address = socketAddress(folder);
    const FileDescriptor socket = newSocket();
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return Reply::nobodyListens;
    }
    ::send(
        socket.get(), request.constData(), static_cast<std::size_t>(request.size()), MSG_NOSIGNAL);
    const auto remaining
        = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock().now());
    pollfd wait{socket.get(), POLLIN, 0};
    ::poll(&wait, 1, static_cast<int>(std::max<std::int64_t>(remaining.count(), 0)));
    char received = 0;
    return ::recv(socket.get(), &received, 1, 0) == 1 && received == answer ? Reply::answered
                                                                            : Reply::none;
}

} // namespace

/// The lock, which the kernel takes back from a process that ends, and the socket. (A lock on a
/// folder also keeps those who clean up old files out of it.)
class SingleInstance::Claim {
public:
    /// None when another process has it, and then the folder stays with the caller.
    static std::unique_ptr<Claim> on(FileDescriptor& folder)
    {
        if (::flock(folder.get(), LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) return nullptr;
            throw std::system_error(lastError());
        }
        FileDescriptor socket = listeningSocket(folder);
        return std::unique_ptr<Claim>(new Claim(std::move(folder), std::move(socket)));
    }

    [[nodiscard]] const FileDescriptor& socket() const { return socket_; }

    void stopListening()
    {
        ::unlinkat(folder_.get(), socketName, 0);
        socket_ = FileDescriptor();
    }

private:
    Claim(FileDescriptor folder, FileDescriptor socket)
        : folder_(std::move(folder)), socket_(std::move(socket))
    {
    }

    FileDescriptor folder_;
    FileDescriptor socket_;
};

/// Whoever connects says at once what it wants, and gets a byte for an answer.
class SingleInstance::Requests {
public:
    Requests(int socket, std::function<void(const QByteArray&)> onRequest)
        : onRequest_(std::move(onRequest)), notifier_(socket, QSocketNotifier::Read)
    {
        QObject::connect(
            &notifier_, &QSocketNotifier::activated, &notifier_, [this, socket] { take(socket); });
    }

private:
    void take(int socket)
    {
        const FileDescriptor peer(::accept4(socket, nullptr, nullptr, SOCK_CLOEXEC));
        if (!peer.isOpen()) return;
        pollfd wait{peer.get(), POLLIN, 0};
        ::poll(&wait, 1, requestPatience);
        QByteArray request(maximumRequest, '\0');
        const ssize_t length = ::recv(
            peer.get(), request.data(), static_cast<std::size_t>(request.size()), MSG_DONTWAIT);
        // A process that has gone meanwhile has changed its mind.
        if (length <= 0 || ::send(peer.get(), &answer, 1, MSG_NOSIGNAL) != 1) return;
        onRequest_(request.first(length));
    }

    std::function<void(const QByteArray&)> onRequest_;
    QSocketNotifier notifier_;
};

SingleInstance::SingleInstance(const QString& program, const QByteArray& request, Duration patience)
{
    const TimePoint deadline = SteadyClock().now() + patience;
    const TimePoint endDeadline = std::max(deadline, SteadyClock().now() + patienceWithEnd);
    FileDescriptor folder = openRuntimeFolder(program);
    if (!folder.isOpen()) {
        throw std::system_error(lastError());
    }
    while (true) {
        claim_ = Claim::on(folder);
        if (claim_) {
            outcome_ = Outcome::first;
            return;
        }
        const Reply reply = replyTo(request, folder, deadline);
        if (reply == Reply::answered) {
            outcome_ = Outcome::handedOver;
            return;
        }
        const bool mayEnd = reply == Reply::nobodyListens;
        if (SteadyClock().now() >= (mayEnd ? endDeadline : deadline)) return;
        std::this_thread::sleep_for(pauseBetweenAttempts);
    }
}

SingleInstance::~SingleInstance() = default;

void SingleInstance::sayThatItEnds()
{
    requests_ = nullptr;
    if (claim_) claim_->stopListening();
}

void SingleInstance::setRequestHandler(std::function<void(const QByteArray& request)> onRequest)
{
    if (claim_ && claim_->socket().isOpen()) {
        requests_ = std::make_unique<Requests>(claim_->socket().get(), std::move(onRequest));
    }
}

} // namespace platform
