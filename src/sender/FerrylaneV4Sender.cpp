#include "sender/FerrylaneV4Sender.h"

#include "core/Base64Url.h"
#include "protocol/PhoneResponse.h"

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

QByteArray statusRequest(const TargetAddress& address)
{
    return QStringLiteral("GET /transfer-status HTTP/1.1\r\nHost: %1:%2\r\n"
                          "Connection: close\r\n\r\n")
        .arg(address.hostInHeader(), QString::number(address.port))
        .toUtf8();
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
        waitUntilReceiverReady(target.address);
        SendProgress progress = progressOf(job, i);
        fileSender_.send(job.files[i], target, senderName_, progress);
    }
}

void FerrylaneV4Sender::waitUntilReceiverReady(const TargetAddress& address)
{
    for (bool told = false;; told = true) {
        const int status = transferStatus(address);
        cancellation_.check();
        // Whoever does not answer this question is asked with the file itself.
        if (status != busyStatus) return;
        if (!told && onWaiting) onMainQueue(onWaiting);
        cancellation_.sleepFor(times_.busyPause);
    }
}

int FerrylaneV4Sender::transferStatus(const TargetAddress& address)
{
    const auto end = with_.clock.now() + times_.statusLimit;
    const auto tcp = with_.network.connection(address.host, address.port);
    PhoneConnection phone(tcp);
    const Cancellation::Watch watch(cancellation_, tcp);
    const QByteArray request = statusRequest(address);
    try {
        if (!phone.connect(times_.statusLimit)) return 0;
        static_cast<void>(phone.send(platform::bytesOf(request)));
        const auto answer = phone.answer(end - with_.clock.now());
        const auto response = parsePhoneResponse(platform::bytesOf(answer.bytes));
        return response ? response->status : 0;
    } catch (const SendError&) {
        // Why there is no answer, the sending of the file will tell.
        return 0;
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
