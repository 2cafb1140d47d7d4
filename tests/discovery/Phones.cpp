#include "Phones.h"

#include <QStringList>

#include <array>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

sockaddr_in socketAddress(std::uint32_t address, std::uint16_t port)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(address);
    result.sin_port = htons(port);
    return result;
}

void sendFrom(std::uint32_t host, const QByteArray& datagram, const platform::Endpoint& to)
{
    const int descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in from = socketAddress(0x7F000000 + host, 0);
    const sockaddr_in target = socketAddress(to.address, to.port);
    ::bind(descriptor, reinterpret_cast<const sockaddr*>(&from), sizeof from);
    ::sendto(descriptor, datagram.constData(), static_cast<std::size_t>(datagram.size()), 0,
        reinterpret_cast<const sockaddr*>(&target), sizeof target);
    ::close(descriptor);
}

} // namespace

Phones::~Phones()
{
    ends_ = true;
    socket_->close();
    thread_.join();
}

void Phones::setAnswers(std::vector<Answer> answers)
{
    const std::lock_guard lock(mutex_);
    answers_ = std::move(answers);
}

void Phones::setNames(const QStringList& names)
{
    std::vector<Answer> answers;
    for (const QString& name : names) {
        answers.push_back({ferrylane::discoveryReply(name, 1)});
    }
    setAnswers(std::move(answers));
}

void Phones::run()
{
    using Outcome = platform::DatagramSocket::Outcome;
    std::array<std::byte, 100> buffer{};
    while (true) {
        const auto received = socket_->receive(buffer);
        if (received.outcome != Outcome::received) return;
        if (!ferrylane::isDiscoveryRequest(platform::ByteView(buffer).first(received.length))) {
            continue;
        }
        ++requests_;
        do {
            answer(received.source);
        } while (floods_ && !ends_);
    }
}

void Phones::answer(const platform::Endpoint& to)
{
    const std::lock_guard lock(mutex_);
    for (const auto& [datagram, host] : answers_) {
        sendFrom(host, datagram, to);
    }
}
