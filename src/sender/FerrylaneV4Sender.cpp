#include "sender/FerrylaneV4Sender.h"

#include "core/Encodings.h"
#include "core/TransferState.h"
#include "platform/Files.h"
#include "protocol/HttpAnswer.h"
#include "protocol/StreamWriter.h"
#include "sender/PhoneConnection.h"

#include <QUuid>

#include <algorithm>
#include <condition_variable>
#include <utility>

namespace ferrylane {

namespace {

constexpr int busyStatus = 409;
constexpr auto reportInterval = std::chrono::milliseconds(200);

platform::SecretKey keyOf(const FerrylanePairedTarget& target)
{
    const auto bytes = base64URLDecode(target.keyB64);
    auto key = bytes ? platform::SecretKey::fromBytes(platform::bytesOf(*bytes)) : std::nullopt;
    if (!key) {
        throw SendError(SendError::invalidKey, QStringLiteral("Paired receiver key is invalid."));
    }
    return std::move(*key);
}

TargetAddress addressOf(const FerrylanePairedTarget& target)
{
    const auto address = parseTargetAddress(target.baseURL);
    if (!address) {
        throw SendError(
            SendError::invalidAddress, QStringLiteral("Paired phone address is invalid."));
    }
    return *address;
}

void checkNotStopped(const std::stop_token& stop)
{
    if (stop.stop_requested()) throw SendError::stopped();
}

/// A regular file that is read once, from start to end. Its size is taken when it is opened; a file
/// that turns out shorter or longer than that has changed while it was read, and what was read of
/// it is worth nothing.
class SourceFile {
public:
    explicit SourceFile(const platform::FilePath& path) : name_(path.name())
    {
        std::error_code error;
        file_ = platform::FileReader::open(path, error);
        // Only regular files have a size that tells how much there is to read.
        if (error == std::errc::invalid_argument) {
            throw SendError(SendError::noFileSize, QStringLiteral("Could not read file size."));
        }
        if (error) throw failure(QString::fromStdString(error.message()));
    }

    /// The last component of the path.
    [[nodiscard]] const QString& name() const { return name_; }
    [[nodiscard]] qint64 size() const { return file_->size(); }

    /// Reads the next bytes: all that `out` has room for, less only at the end, where it is none.
    [[nodiscard]] std::size_t next(platform::MutableByteView out)
    {
        // At the end one byte is asked for, to see that there is none.
        const auto left = static_cast<std::size_t>(size() - read_);
        const std::size_t expected = std::min(left, out.size());
        std::error_code error;
        const std::size_t count = file_->read(out.first(std::max<std::size_t>(expected, 1)), error);
        if (error) throw failure(QString::fromStdString(error.message()));
        if (count != expected) throw failure(QStringLiteral("changed while it was being sent"));
        read_ += static_cast<qint64>(count);
        return count;
    }

private:
    [[nodiscard]] SendError failure(const QString& what) const
    {
        return {SendError::Domain::file, 0, QStringLiteral("%1: %2").arg(name_, what)};
    }

    QString name_;
    std::unique_ptr<platform::FileReader> file_;
    qint64 read_ = 0;
};

V4Transfer newTransfer(const SourceFile& file)
{
    V4Transfer transfer;
    transfer.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    transfer.fileName = file.name();
    transfer.fileSize = file.size();
    if (!platform::fillWithRandomBytes(transfer.noncePrefix)) {
        throw SendError(SendError::noNonce, QStringLiteral("Could not create transfer nonce."));
    }
    return transfer;
}

/// Throws unless the phone says that it has stored the file.
void checkAnswer(const PhoneConnection::Answer& answer, bool isAllSent)
{
    const auto response = parsePhoneResponse(platform::bytesOf(answer.bytes));
    if (response && !response->isSuccess()) {
        const QString text = QStringLiteral("Phone returned %1").arg(response->status);
        throw SendError(response->status,
            response->body.isEmpty() ? text : text + QStringLiteral(": ") + response->body);
    }
    // A success counts only after all of the file, and when it came to its end.
    const bool isEarly = response && !isAllSent;
    if (answer.error && !isEarly) throw SendError::network(answer.error);
    if (!response || isEarly) {
        throw SendError(
            SendError::invalidResponse, QStringLiteral("Invalid HTTP response from phone."));
    }
}

} // namespace

struct FerrylaneV4Sender::Job {
    platform::FilePaths files;
    FerrylanePairedTarget target;
    std::stop_token stop;
};

FerrylaneV4Sender::FerrylaneV4Sender(QString senderName, SendTimes times)
    : senderName_(std::move(senderName)), times_(times)
{
}

FerrylaneV4Sender::~FerrylaneV4Sender()
{
    cancel();
}

void FerrylaneV4Sender::send(const platform::FilePaths& files, const FerrylanePairedTarget& target)
{
    stop_ = std::stop_source();
    workerQueue_.async([this, job = Job{files, target, stop_.get_token()}] {
        // Events of an object go with it, so nothing is told of a sender that has gone.
        QMetaObject::invokeMethod(
            this, [this, result = run(job)] { Q_EMIT completed(result); }, Qt::QueuedConnection);
    });
}

void FerrylaneV4Sender::cancel()
{
    stop_.request_stop();
}

FerrylaneV4Sender::Result FerrylaneV4Sender::run(const Job& job)
{
    try {
        sendAll(job);
        return static_cast<int>(job.files.size());
    } catch (const SendError& error) {
        // Closing the connection is how a job is stopped, so its errors then mean just that.
        if (job.stop.stop_requested()) return SendError::stopped();
        return error;
    } catch (const std::system_error& error) {
        return SendError::network(error.code());
    } catch (const std::exception& error) {
        return SendError(SendError::Domain::file, 0, QString::fromUtf8(error.what()));
    }
}

void FerrylaneV4Sender::sendAll(const Job& job)
{
    const platform::SecretKey key = keyOf(job.target);
    checkNotStopped(job.stop);
    const TargetAddress address = addressOf(job.target);
    const auto count = static_cast<int>(job.files.size());
    for (int i = 0; i < count; ++i) {
        checkNotStopped(job.stop);
        waitUntilReceiverReady(job, address);
        sendFile(job, address, key, job.files[i], {job.files[i].name(), i, count, 0, 0});
    }
}

void FerrylaneV4Sender::waitUntilReceiverReady(const Job& job, const TargetAddress& address)
{
    for (bool told = false;; told = true) {
        const int status = transferStatus(job, address);
        checkNotStopped(job.stop);
        // Whoever does not answer this question is asked with the file itself.
        if (status != busyStatus) return;
        if (!told) {
            QMetaObject::invokeMethod(
                this,
                [this, stop = job.stop] {
                    if (!stop.stop_requested()) Q_EMIT waiting();
                },
                Qt::QueuedConnection);
        }
        std::mutex mutex;
        std::unique_lock lock(mutex);
        std::condition_variable_any().wait_for(
            lock, job.stop, times_.busyPause, [] { return false; });
        checkNotStopped(job.stop);
    }
}

/// The phone's HTTP status; 0 when it has none to tell in time.
int FerrylaneV4Sender::transferStatus(const Job& job, const TargetAddress& address)
{
    const platform::SteadyClock clock;
    const auto end = clock.now() + times_.statusLimit;
    const QByteArray request = QStringLiteral("GET /transfer-status HTTP/1.1\r\nHost: %1:%2\r\n"
                                              "Connection: close\r\n\r\n")
                                   .arg(address.hostInHeader(), QString::number(address.port))
                                   .toUtf8();
    PhoneConnection phone(job.stop);
    try {
        if (!phone.connect(address, times_.statusLimit)) return 0;
        static_cast<void>(phone.send(platform::bytesOf(request)));
        const auto answer = phone.answer(end - clock.now());
        const auto response = parsePhoneResponse(platform::bytesOf(answer.bytes));
        return response ? response->status : 0;
    } catch (const SendError&) {
        // Why there is no answer, the sending of the file will tell.
        return 0;
    }
}

void FerrylaneV4Sender::sendFile(const Job& job, const TargetAddress& address,
    const platform::SecretKey& key, const platform::FilePath& path, Progress progress)
{
    SourceFile file(path);
    const V4Transfer transfer = newTransfer(file);

    PhoneConnection phone(job.stop);
    const QString where = QStringLiteral("%1:%2").arg(address.host, QString::number(address.port));
    if (!phone.connect(address, times_.connectLimit, where)) {
        throw SendError(SendError::connectTimedOut,
            QStringLiteral("Timed out connecting to %1 at %2.").arg(job.target.name, where));
    }

    const platform::SteadyClock clock;
    const auto start = clock.now();
    auto reported = start;
    qint64 sentBytes = 0;
    const auto reportNow = [&](double fraction) {
        reported = clock.now();
        progress.fraction = fraction;
        progress.speed = megabytesPerSecond(static_cast<quint64>(sentBytes), reported - start);
        report(job, progress);
    };

    const QByteArray head
        = uploadRequestHead(transfer, address.hostInHeader(), address.port, senderName_);
    StreamWriter writer(transfer, key);
    platform::ByteBuffer chunk;
    // False once the phone has answered and closed its side.
    bool goesOn = phone.send(platform::bytesOf(head));
    while (goesOn) {
        const std::size_t count = file.next(writer.room(maximumRecordPlaintext));
        if (count == 0) break;
        writer.seal(count, chunk);
        goesOn = phone.send(chunk.unread());
        chunk.consume(chunk.size());
        if (writer.isFull()) {
            throw SendError(
                SendError::tooManyRecords, QStringLiteral("File has too many transfer records."));
        }
        checkNotStopped(job.stop);
        sentBytes += static_cast<qint64>(count);
        if (clock.now() - reported >= reportInterval || sentBytes == file.size()) {
            reportNow(static_cast<double>(sentBytes) / static_cast<double>(file.size()));
        }
    }
    if (goesOn) {
        writer.finish(chunk);
        goesOn = phone.send(chunk.unread());
    }
    checkAnswer(phone.answer(times_.answerLimit), goesOn);
    reportNow(1);
}

void FerrylaneV4Sender::report(const Job& job, const Progress& progress)
{
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(untold_, progress)) return;
    }
    QMetaObject::invokeMethod(
        this,
        [this, stop = job.stop] {
            std::unique_lock lock(mutex_);
            const Progress latest = *std::exchange(untold_, std::nullopt);
            lock.unlock();
            if (!stop.stop_requested()) Q_EMIT progressed(latest);
        },
        Qt::QueuedConnection);
}

} // namespace ferrylane
