#include "platform/ServicePublisher.h"

#include "platform/linux/AvahiAnnouncer.h"

#include <mutex>
#include <system_error>
#include <utility>

namespace platform {

namespace {

class AvahiPublisher final : public ServicePublisher {
public:
    AvahiPublisher(LogHandler log, Duration retryInterval)
        : log_(std::move(log)), retryInterval_(retryInterval)
    {
    }

    ~AvahiPublisher() override
    {
        if (!loop_) return;
        announcer_->silence();
        loop_->finish([announcer = announcer_] { announcer->withdraw(); });
    }

    void publish(const QString& name, const QString& type, std::uint16_t port) override
    {
        const std::lock_guard lock(mutex_);
        if (!hasStarted()) return;
        loop_->async([announcer = announcer_, service = AvahiAnnouncer::Service{name, type, port}] {
            announcer->announce(service);
        });
    }

    void withdraw() override
    {
        const std::lock_guard lock(mutex_);
        if (loop_) loop_->async([announcer = announcer_] { announcer->withdraw(); });
    }

    [[nodiscard]] std::shared_ptr<const AnnouncedName> announcedName() const override
    {
        return announcedName_;
    }

private:
    bool hasStarted()
    {
        if (loop_) return true;
        try {
            loop_ = AvahiLoop::start("dns-sd publisher");
        } catch (const std::system_error& error) {
            if (!std::exchange(hasToldFailure_, true)) {
                log_(QStringLiteral("DNS-SD is not available: ") + QString::fromUtf8(error.what()));
            }
            return false;
        }
        announcer_ = std::make_shared<AvahiAnnouncer>(*loop_, log_, announcedName_, retryInterval_);
        return true;
    }

    LogHandler log_;
    Duration retryInterval_;
    std::shared_ptr<AnnouncedName> announcedName_ = std::make_shared<AnnouncedName>();

    std::mutex mutex_; ///< for what follows
    bool hasToldFailure_ = false;
    std::shared_ptr<AvahiLoop> loop_; ///< since the first publish()
    // Shared with the loop's thread, which may hang and be left to itself.
    std::shared_ptr<AvahiAnnouncer> announcer_;
};

} // namespace

std::unique_ptr<ServicePublisher> ServicePublisher::create(LogHandler log, Duration retryInterval)
{
    return std::make_unique<AvahiPublisher>(std::move(log), retryInterval);
}

} // namespace platform
