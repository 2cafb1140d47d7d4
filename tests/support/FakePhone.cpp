#include "support/FakePhone.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

QByteArray httpAnswer(const QByteArray& status, const QByteArray& body)
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: text/plain\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

QByteArray FakePhone::Upload::body()
{
    while (!begun_.endsWith("\r\n0\r\n\r\n")) {
        const QByteArray more = client_.receiveSome();
        if (more.isEmpty()) break;
        begun_ += more;
    }
    return begun_;
}

void FakePhone::Upload::stall()
{
    // Longer than a test takes to cancel, shorter than it is patient.
    for (int i = 0; i < 500 && !client_.isClosedByPeer(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

FakePhone::FakePhone(Part part, std::vector<QByteArray> statusAnswers)
    : part_(std::move(part))
    , statusAnswers_(std::move(statusAnswers))
    , listener_(socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    if (statusAnswers_.empty()) statusAnswers_.push_back(httpAnswer("200 OK", "READY"));
    std::reverse(statusAnswers_.begin(), statusAnswers_.end());
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_any;
    socklen_t length = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, generic, length) != 0 || listen(listener_, 16) != 0
        || getsockname(listener_, generic, &length) != 0) {
        throw std::runtime_error("no port for a phone");
    }
    port_ = ntohs(address.sin6_port);
    thread_ = std::thread([this] { serve(); });
}

FakePhone::~FakePhone()
{
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
}

QString FakePhone::baseURL(const QString& host) const
{
    return QStringLiteral("http://%1:%2").arg(host).arg(port_);
}

std::vector<QByteArray> FakePhone::heads() const
{
    const std::lock_guard lock(mutex_);
    return heads_;
}

std::size_t FakePhone::uploadCount() const
{
    const auto all = heads();
    return static_cast<std::size_t>(std::count_if(
        all.begin(), all.end(), [](const QByteArray& head) { return head.startsWith("POST"); }));
}

void FakePhone::serve()
{
    for (;;) {
        const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0) return;
        TcpClient client = TcpClient::ofDescriptor(descriptor);
        talk(client);
    }
}

void FakePhone::talk(TcpClient& client)
{
    QByteArray received;
    while (!received.contains("\r\n\r\n")) {
        const QByteArray more = client.receiveSome();
        if (more.isEmpty()) return;
        received += more;
    }
    const qsizetype end = received.indexOf("\r\n\r\n") + 4;
    {
        const std::lock_guard lock(mutex_);
        heads_.push_back(received.first(end));
    }
    if (received.startsWith("POST")) {
        Upload upload(client, received.sliced(end));
        part_(upload);
        return;
    }
    client.send(statusAnswers_.back());
    if (statusAnswers_.size() > 1) statusAnswers_.pop_back();
}

} // namespace support
