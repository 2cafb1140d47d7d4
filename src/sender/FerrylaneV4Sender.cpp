#include "sender/FerrylaneV4Sender.h"

#include "core/Base64Url.h"

#include <utility>

namespace ferrylane {

namespace {

constexpr int busyStatus = 409;

platform::SecretKey keyOf(const FerrylanePairedTarget& target)
{
    const auto bytes = base64URLDecode(target.keyB64);
    auto key = bytes ? platform::SecretKey::fromBytes(platform::bytesOf(*bytes)) : std::nullopt;
    if (!key) throw send_errors::invalidKey();
    return std::move(*key);
}

TargetAddress addressOf(const FerrylanePairedTarget& target)
{
    const auto address = parseTargetAddress(target.baseURL);
    if (!address) throw send_errors::invalidAddress();
    return *address;
}

} // namespace

struct FerrylaneV4Sender::Job {
    platform::FilePaths files;
    FerrylanePairedTarget target;
    ProgressHandler progress;
    CompletionHandler completion;
};

FerrylaneV4Sender::FerrylaneV4Sender(
    const Collaborators& collaborators, QString senderName, SendTimes times)
    : with_(collaborators)
    , senderName_(std::move(senderName))
    , times_(times)
    , fileSender_(with_.network, cancellation_, times_)
{
}

FerrylaneV4Sender::~FerrylaneV4Sender()
{
    cancel();
}

void FerrylaneV4Sender::send(const platform::FilePaths& files, const FerrylanePairedTarget& target,
    ProgressHandler progress, CompletionHandler completion)
{
    // Here and not in the job: a cancel() between the two must count.
    cancellation_.clear();
    workerQueue_.async(
        [this, job = Job{files, target, std::move(progress), std::move(completion)}] {
            onMainQueue([completion = job.completion, result = run(job)] { completion(result); });
        });
}

void FerrylaneV4Sender::cancel()
{
    cancellation_.cancel();
}

FerrylaneV4Sender::Result FerrylaneV4Sender::run(const Job& job)
{
    try {
        sendAll(job);
        return static_cast<int>(job.files.size());
    } catch (const SendError& error) {
        // Closing the connection is how a job is stopped, so its errors then mean just that.
        if (cancellation_.isCancelled()) return send_errors::stopped();
        return error;
    } catch (const std::exception& error) {
        return SendError(SendError::Domain::file, 0, QString::fromUtf8(error.what()));
    }
}

void FerrylaneV4Sender::sendAll(const Job& job)
{
    platform::SecretKey key = keyOf(job.target);
    cancellation_.check();
    const SendTarget target{job.target.name, addressOf(job.target), std::move(key)};
    for (int i = 0; i < job.files.size(); ++i) {
        cancellation_.check();
        waitUntilReceiverReady(target);
        SendProgress progress = progressOf(job, i);
        fileSender_.send(job.files[i], target, senderName_, progress);
    }
}

void FerrylaneV4Sender::waitUntilReceiverReady(const SendTarget& target)
{
    const auto isCancelled = [this] { return cancellation_.isCancelled(); };
    for (bool told = false;; told = true) {
        const int status
            = httpClient_->getStatus(target.address.statusURL(), times_.statusLimit, isCancelled);
        cancellation_.check();
        // Whoever does not answer this question is asked with the file itself.
        if (status != busyStatus) return;
        if (!told && onWaiting) onMainQueue(onWaiting);
        cancellation_.sleepFor(times_.busyPause);
    }
}

SendProgress FerrylaneV4Sender::progressOf(const Job& job, int fileIndex)
{
    Progress progress{
        job.files[fileIndex].name(), fileIndex, static_cast<int>(job.files.size()), 0, 0};
    return {with_.clock, [this, &job, progress](double fraction, double speed) mutable {
                progress.fraction = fraction;
                progress.speed = speed;
                onMainQueue([handler = job.progress, progress] { handler(progress); });
            }};
}

void FerrylaneV4Sender::onMainQueue(std::function<void()> call)
{
    with_.mainQueue.async([weak = std::weak_ptr(alive_), call = std::move(call)] {
        if (!weak.expired()) call();
    });
}

} // namespace ferrylane
