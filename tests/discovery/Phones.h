#pragma once

#include "platform/DatagramSocket.h"
#include "protocol/DiscoveryProtocol.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

/// Phones on the loopback network that answer each discovery request.
class Phones {
public:
    struct Answer {
        QByteArray datagram;
        std::uint32_t host = 1; ///< 127.0.0.x
    };

    static constexpr platform::Endpoint network{0x7F000001, ferrylane::discoveryPort};

    Phones() = default;
    ~Phones();
    Phones(const Phones&) = delete;
    Phones& operator=(const Phones&) = delete;

    /// What each request is answered with from now on.
    void setAnswers(std::vector<Answer> answers);
    /// The same by name, from the first host.
    void setNames(const QStringList& names);
    /// Repeats the answers to a request until this goes.
    void flood() { floods_ = true; }
    [[nodiscard]] int requests() const { return requests_; }

private:
    void run();
    void answer(const platform::Endpoint& to);

    std::mutex mutex_;
    std::vector<Answer> answers_;
    std::atomic<int> requests_ = 0;
    std::atomic<bool> floods_ = false;
    std::atomic<bool> ends_ = false;
    std::unique_ptr<platform::DatagramSocket> socket_
        = platform::DatagramSocket::bound(ferrylane::discoveryPort);
    std::thread thread_{[this] { run(); }};
};
