#pragma once

#include "support/TcpClient.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace support {

/// A phone's receiver that does what a test wants: it answers status requests from a list, and
/// plays a given part in each upload. One connection at a time, on a port of its own, on 127.0.0.1
/// and ::1.
class FakePhone {
public:
    /// One upload, from behind its head. What the peer sends is read by `body()`.
    class Upload {
    public:
        Upload(TcpClient& client, QByteArray begun) : client_(client), begun_(std::move(begun)) {}
        /// Reads up to the last chunk, or to the end of the connection.
        QByteArray body();
        void answer(const QByteArray& bytes) { client_.send(bytes); }
        /// Reads nothing until the peer gives up.
        void stall();

    private:
        TcpClient& client_;
        QByteArray begun_;
    };
    using Part = std::function<void(Upload&)>;

    explicit FakePhone(Part part, std::vector<QByteArray> statusAnswers = {});
    ~FakePhone();
    FakePhone(const FakePhone&) = delete;
    FakePhone& operator=(const FakePhone&) = delete;

    [[nodiscard]] QString baseURL(const QString& host = QStringLiteral("127.0.0.1")) const;
    /// The request heads so far, status requests included.
    [[nodiscard]] std::vector<QByteArray> heads() const;
    [[nodiscard]] std::size_t uploadCount() const;

private:
    void serve();
    void talk(TcpClient& client);

    Part part_;
    std::vector<QByteArray> statusAnswers_; ///< the last one is given again and again
    mutable std::mutex mutex_;
    std::vector<QByteArray> heads_;
    int listener_;
    std::uint16_t port_ = 0;
    std::thread thread_;
};

/// An answer with its headers.
[[nodiscard]] QByteArray httpAnswer(const QByteArray& status, const QByteArray& body);

} // namespace support
