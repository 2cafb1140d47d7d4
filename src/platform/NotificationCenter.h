#pragma once

#include "platform/SerialQueue.h"

#include <QString>

#include <functional>
#include <memory>
#include <utility>
#include <variant>

namespace platform {

/// Tells whoever asked for it that something has happened. A notification has a name and at most
/// one value. Handlers run on the main queue, in the order of posting.
class NotificationCenter {
public:
    using Payload = std::variant<std::monostate, QString, double>;
    using Handler = std::function<void(const Payload&)>;

    /// Ends the observation when it goes; on the main queue, no call comes afterwards.
    class Observation {
    public:
        Observation() = default;
        explicit Observation(std::function<void()> end) : end_(std::move(end)) {}
        Observation(Observation&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
        Observation& operator=(Observation&& other) noexcept
        {
            std::swap(end_, other.end_);
            return *this;
        }
        Observation(const Observation&) = delete;
        Observation& operator=(const Observation&) = delete;
        ~Observation()
        {
            if (end_) end_();
        }

    private:
        std::function<void()> end_;
    };

    /// `mainQueue` must outlive the centre.
    explicit NotificationCenter(SerialQueue& mainQueue);
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// From the main queue only.
    [[nodiscard]] Observation observe(const QString& name, Handler handler);
    /// From any thread; returns at once.
    void post(const QString& name, Payload payload = {});
    /// On the main queue: runs the handlers now.
    void deliver(const QString& name, const Payload& payload);

private:
    struct Observers;
    SerialQueue& mainQueue_;
    std::shared_ptr<Observers> observers_;
};

} // namespace platform
