#include "platform/ServicePublisher.h"

#include "platform/linux/AvahiAnnouncer.h"

namespace platform {

namespace {

class AvahiPublisher final : public ServicePublisher {
public:
    AvahiPublisher(LogHandler log, Duration retryInterval)
        : loop_(AvahiLoop::start("dns-sd publisher"))
        , announcer_(std::make_shared<AvahiAnnouncer>(*loop_, std::move(log), retryInterval))
    {
    }

    ~AvahiPublisher() override
    {
        announcer_->silence();
        loop_->finish([announcer = announcer_] { announcer->withdraw(); });
    }

    void publish(const QString& name, const QString& type, std::uint16_t port) override
    {
        loop_->async([announcer = announcer_, service = AvahiAnnouncer::Service{name, type, port}] {
            announcer->announce(service);
        });
    }

    void withdraw() override
    {
        loop_->async([announcer = announcer_] { announcer->withdraw(); });
    }

private:
    std::shared_ptr<AvahiLoop> loop_;
    // Shared with the loop's thread, which may hang and be left to itself.
    std::shared_ptr<AvahiAnnouncer> announcer_;
};

} // namespace

std::unique_ptr<ServicePublisher> ServicePublisher::create(LogHandler log, Duration retryInterval)
{
    return std::make_unique<AvahiPublisher>(std::move(log), retryInterval);
}

} // namespace platform
