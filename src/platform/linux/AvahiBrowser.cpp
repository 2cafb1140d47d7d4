#include "platform/ServiceBrowser.h"

#include "platform/linux/AvahiFinder.h"

namespace platform {

namespace {

class AvahiBrowser final : public ServiceBrowser {
public:
    AvahiBrowser(std::shared_ptr<const AnnouncedName> own, Duration retryInterval)
        : own_(std::move(own)), retryInterval_(retryInterval)
    {
    }
    ~AvahiBrowser() override { AvahiBrowser::stop(); }

    void start(const QString& type, ResultsHandler onResults, FailureHandler onFailure) override
    {
        stop();
        try {
            loop_ = AvahiLoop::start("dns-sd browser");
        } catch (const std::system_error& error) {
            return onFailure(QString::fromUtf8(error.what()));
        }
        finder_ = std::make_shared<AvahiFinder>(*loop_,
            AvahiFinder::Wanted{type.toUtf8(), own_, std::move(onResults), std::move(onFailure)},
            retryInterval_);
        loop_->async([finder = finder_] { finder->start(); });
    }

    void stop() override
    {
        if (!loop_) return;
        finder_->silence();
        loop_->finish([finder = finder_] { finder->stop(); });
        finder_.reset();
        loop_.reset();
    }

private:
    std::shared_ptr<const AnnouncedName> own_;
    Duration retryInterval_;
    std::shared_ptr<AvahiLoop> loop_; ///< while there is something to look for
    // Shared with the loop's thread, which may hang and be left to itself.
    std::shared_ptr<AvahiFinder> finder_;
};

} // namespace

std::unique_ptr<ServiceBrowser> ServiceBrowser::create(
    std::shared_ptr<const AnnouncedName> own, Duration retryInterval)
{
    return std::make_unique<AvahiBrowser>(std::move(own), retryInterval);
}

} // namespace platform
